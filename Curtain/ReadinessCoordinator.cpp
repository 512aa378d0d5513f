#include "Curtain/ReadinessCoordinator.h"

#include "Curtain/PrivateAppsInspector.h"

#include <algorithm>

namespace Curtain {

ReadinessCoordinator::ReadinessCoordinator(CurtainCore::PreferencesStore& store,
                                           Platform::Workspace& workspace, const DesktopController& desktop,
                                           const DesktopChecker& desktopChecker)
    : isPrivacyModeActive([] { return false; }),
      isPrivacyModeAutomatic([] { return false; }),
      isDoNotDisturbOn([] { return std::nullopt; }),
      cameraReadinessProvider([] { return ProviderReadiness{}; }),
      micReadinessProvider([] { return ProviderReadiness{}; }),
      store_(store),
      workspace_(workspace),
      desktop_(desktop),
      desktopChecker_(desktopChecker) {}

void ReadinessCoordinator::refresh() {
    using CurtainCore::NotificationStatus;
    const CurtainCore::PreferencesStore::Action action(store_);
    const auto preferences = store_.load();
    CurtainCore::ReadinessInput input;
    const auto apps = PrivateAppsInspector::report(workspace_, preferences.targetApps);
    input.privateAppsVisible = apps.visible;
    input.privateAppsUnknown = apps.unknown;
    const auto desktop = preferences.checkDesktopFiles ? desktopChecker_.check()
                                                       : DesktopChecker::Report{0, desktop_.iconsHidden()};
    input.desktopFileCount = desktop.fileCount;
    input.desktopHidden = desktop.iconsHidden;
    const bool isForUser = preferences.checkNotifications && !preferences.notificationsMarkedHandled;
    input.notifications = isForUser && isDoNotDisturbOn() != true ? NotificationStatus::mayAppear
                                                                  : NotificationStatus::protected_;
    const auto camera = cameraReadinessProvider();
    input.cameraEvaluated = camera.evaluated;
    input.cameraOK = camera.ok;
    const auto microphone = micReadinessProvider();
    input.micEvaluated = microphone.evaluated;
    input.micOK = microphone.ok;
    input.privacyModeActive = isPrivacyModeActive();
    state_ = engine_.build(input);
    Q_EMIT stateChanged();
}

void ReadinessCoordinator::toggleTargetApp(const CatalogEntry& entry) {
    const CurtainCore::PreferencesStore::Action action(store_);
    auto preferences = store_.load();
    auto& apps = preferences.targetApps;
    const auto found = std::ranges::find(apps, entry.bundleID, &CurtainCore::TargetApp::bundleID);
    const bool wasPrivate = found != apps.end();
    if (wasPrivate) {
        apps.erase(found);
    } else {
        apps.push_back({entry.bundleID, entry.name});
    }
    store_.save(preferences);
    const bool isPrivate = std::ranges::count(apps, entry.bundleID, &CurtainCore::TargetApp::bundleID) > 0;
    if (!isPrivate) {
        Q_EMIT privateAppRemoved(entry.bundleID);
    } else if (!wasPrivate) {
        Q_EMIT privateAppAdded(entry.bundleID);
    }
    refresh();
}

} // namespace Curtain
