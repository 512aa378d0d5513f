#include "Curtain/HidingWording.h"

#include "Curtain/PlatformWording.h"

namespace Curtain {

using Platform::HidingObstacle;

std::string_view HidingWording::reason(HidingObstacle obstacle, std::string_view lang) {
    switch (obstacle) {
    case HidingObstacle::waylandSession:
        return PlatformWording::string(PlatformKey::noHidingOnWayland, lang);
    case HidingObstacle::noWindowManager:
        return PlatformWording::string(PlatformKey::noWindowManager, lang);
    case HidingObstacle::nextSessionNeeded:
        return PlatformWording::string(PlatformKey::logOutOnce, lang);
    case HidingObstacle::windowManagerIgnoresHiding:
        return PlatformWording::string(PlatformKey::windowManagerIgnoresHiding, lang);
    case HidingObstacle::extensionMissing:
        return PlatformWording::string(PlatformKey::extensionMissing, lang);
    case HidingObstacle::extensionOff:
        return PlatformWording::string(PlatformKey::extensionOff, lang);
    case HidingObstacle::extensionFails:
        return PlatformWording::string(PlatformKey::extensionFails, lang);
    case HidingObstacle::notKnownYet:
        break;
    }
    return PlatformWording::string(PlatformKey::hidingNotKnownYet, lang);
}

std::string_view HidingWording::remedy(HidingObstacle obstacle, std::string_view lang) {
    switch (obstacle) {
    case HidingObstacle::waylandSession:
        return PlatformWording::string(PlatformKey::chooseX11Session, lang);
    case HidingObstacle::noWindowManager:
        return PlatformWording::string(PlatformKey::startWindowManager, lang);
    case HidingObstacle::windowManagerIgnoresHiding:
        return PlatformWording::string(PlatformKey::chooseAnotherDesktop, lang);
    case HidingObstacle::extensionMissing:
        return PlatformWording::string(PlatformKey::installExtension, lang);
    case HidingObstacle::extensionOff:
        return PlatformWording::string(PlatformKey::switchExtensionOn, lang);
    case HidingObstacle::extensionFails:
        return PlatformWording::string(PlatformKey::chooseX11Session, lang);
    case HidingObstacle::nextSessionNeeded:
    case HidingObstacle::notKnownYet:
        break;
    }
    return {};
}

} // namespace Curtain
