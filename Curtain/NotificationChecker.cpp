#include "Curtain/NotificationChecker.h"

namespace Curtain::NotificationChecker {

bool openFocusSettings(Platform::UrlOpener& opener) {
    return opener.open(Platform::SettingsLink::focus);
}

} // namespace Curtain::NotificationChecker
