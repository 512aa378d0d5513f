#include "Curtain/FixEverything.h"

namespace Curtain {

bool FixEverything::needsQuiet(const CurtainCore::Preferences& preferences) {
    return preferences.checkNotifications && !preferences.notificationsMarkedHandled;
}

bool FixEverything::run(CurtainCore::HideEngine& engine, CurtainCore::PreferencesStore& store,
                        const DesktopController& desktop) {
    const auto preferences = store.load();
    if (!engine.isActive()) {
        engine.activate(preferences.targetBundleIDs());
    }
    if (preferences.hideFinderWithFixEverything && !desktop.iconsHidden()) {
        desktop.setIconsHidden(true);
    }
    return needsQuiet(preferences);
}

} // namespace Curtain
