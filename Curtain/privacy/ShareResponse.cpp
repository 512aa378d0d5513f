#include "Curtain/privacy/ShareResponse.h"

namespace Curtain {
namespace {

/// A share that goes on has been noticed by then.
constexpr Platform::MainQueue::Seconds shareNoticed{10.0};

} // namespace

ShareResponse::ShareResponse(const Services& services)
    : services_(services),
      monitor_(services.probe, services.workspace, services.mainQueue) {}

void ShareResponse::start() {
    const auto preferences = services_.store.load();
    if (preferences.autoDetectEnabled) {
        monitor_.triggerBundleIDs = {preferences.triggerBundleIDs.begin(),
                                     preferences.triggerBundleIDs.end()};
        monitor_.onConfidenceChanged = [this](auto confidence) { confidenceChanged(confidence); };
        monitor_.start();
    }
}

void ShareResponse::awaitShare() {
    isShareAwaited_ = true;
    lookLater();
}

void ShareResponse::confidenceChanged(CurtainCore::DetectionConfidence confidence) {
    const CurtainCore::PreferencesStore::Action action(services_.store);
    if (confidence != CurtainCore::DetectionConfidence::high) {
        if (!isShareAwaited_) {
            undoWhatIsAutomatic();
        }
        return;
    }
    isShareAwaited_ = false;
    if (services_.privacy.isOn()) {
        return;
    }
    if (services_.store.load().autoDetectMode == CurtainCore::AutoDetectMode::promptOnly) {
        services_.notifier.notifyPrompt();
    } else {
        services_.privacy.switchOnForShare();
    }
}

void ShareResponse::lookLater() {
    services_.mainQueue.asyncAfter(shareNoticed, lifetime_.weak([this] { endUnlessShared(); }));
}

void ShareResponse::endUnlessShared() {
    if (!isShareAwaited_) {
        return;
    }
    const auto& query = services_.screenWatcher.fn;
    const auto isShared = query ? query() : false;
    if (!isShared) {
        lookLater();
        return;
    }
    isShareAwaited_ = false;
    if (!*isShared) {
        undoWhatIsAutomatic();
    }
}

void ShareResponse::undoWhatIsAutomatic() {
    if (services_.privacy.isAutomatic()) {
        services_.privacy.undo();
    }
}

} // namespace Curtain
