#include "Curtain/NotificationChecker.h"

#include "Curtain/SettingsLinks.h"

namespace Curtain::NotificationChecker {

bool openFocusSettings(Platform::UrlOpener& opener) {
    return opener.open(SettingsLinks::focus);
}

} // namespace Curtain::NotificationChecker
