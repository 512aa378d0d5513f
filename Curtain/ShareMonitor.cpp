#include "Curtain/ShareMonitor.h"

#include <utility>

namespace Curtain {
namespace {

constexpr Platform::MainQueue::Seconds period{3.0};

} // namespace

ShareMonitor::ShareMonitor(Platform::ScreenWatcherProbe& probe, Platform::Workspace& workspace,
                           Platform::MainQueue& mainQueue)
    : watcher_(probe),
      workspace_(workspace),
      mainQueue_(mainQueue) {}

void ShareMonitor::start() {
    timer_ = mainQueue_.repeating(period, [this] { tick(); });
}

void ShareMonitor::tick() {
    std::set<std::string> runningTriggers;
    for (const auto& application : workspace_.runningApplications()) {
        auto identifier = application->bundleIdentifier();
        if (identifier && triggerBundleIDs.contains(*identifier)) {
            runningTriggers.insert(std::move(*identifier));
        }
    }
    const bool watcherActive = watcher_.fn && watcher_.fn().value_or(false);
    const auto confidence = detector_.evaluate(watcherActive, runningTriggers);
    if (confidence == lastConfidence_) {
        return;
    }
    lastConfidence_ = confidence;
    if (onConfidenceChanged) {
        onConfidenceChanged(confidence);
    }
}

} // namespace Curtain
