#include "Curtain/FixEverything.h"

namespace Curtain {

bool FixEverything::run(CurtainCore::HideEngine& engine, CurtainCore::PreferencesStore& store,
                        const DesktopController& desktop) {
    const auto preferences = store.load();
    if (!engine.isActive()) {
        engine.activate(preferences.targetBundleIDs());
    }
    if (preferences.hideFinderWithFixEverything && !desktop.iconsHidden()) {
        desktop.setIconsHidden(true);
    }
    return preferences.checkNotifications && !preferences.notificationsMarkedHandled;
}

} // namespace Curtain
