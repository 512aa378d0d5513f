#include "Curtain/FixEverything.h"

#include <string>
#include <utility>
#include <vector>

namespace Curtain {

bool FixEverything::run(CurtainCore::HideEngine& engine, CurtainCore::PreferencesStore& store,
                        const DesktopController& desktop) {
    const auto preferences = store.load();
    if (!engine.isActive()) {
        std::vector<std::string> identifiers;
        identifiers.reserve(preferences.targetApps.size());
        for (const auto& target : preferences.targetApps) {
            identifiers.push_back(target.bundleID);
        }
        engine.activate(std::move(identifiers));
    }
    if (preferences.hideFinderWithFixEverything && !desktop.iconsHidden()) {
        desktop.setIconsHidden(true);
    }
    return preferences.checkNotifications && !preferences.notificationsMarkedHandled;
}

} // namespace Curtain
