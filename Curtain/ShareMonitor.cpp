#include "Curtain/ShareMonitor.h"

#include <utility>

namespace Curtain {
namespace {

constexpr Platform::MainQueue::Seconds period{3.0};

} // namespace

ShareMonitor::ShareMonitor(Platform::ScreenWatcherProbe& probe, Platform::Workspace& workspace,
                           Platform::MainQueue& mainQueue)
    : probe_(probe),
      watcher_(probe),
      workspace_(workspace),
      mainQueue_(mainQueue) {}

void ShareMonitor::start() {
    poll();
    news_ = probe_.addNewsObserver([this] { lookNow(); });
}

void ShareMonitor::poll() {
    timer_ = mainQueue_.repeating(period, [this] { tick(); });
}

void ShareMonitor::lookNow() {
    poll();
    tick();
}

void ShareMonitor::tick() {
    std::set<std::string> runningTriggers;
    for (const auto& application : workspace_.runningApplications()) {
        auto identifier = application->bundleIdentifier();
        if (identifier && triggerBundleIDs.contains(*identifier)) {
            runningTriggers.insert(std::move(*identifier));
        }
    }
    const auto watcherActive = watcher_.fn ? watcher_.fn() : false;
    if (!watcherActive) {
        // Nobody knows: whatever was true last may still be.
        return;
    }
    const auto confidence = detector_.evaluate(*watcherActive, runningTriggers);
    if (confidence == lastConfidence_) {
        return;
    }
    lastConfidence_ = confidence;
    if (onConfidenceChanged) {
        onConfidenceChanged(confidence);
    }
}

} // namespace Curtain
