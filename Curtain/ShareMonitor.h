#pragma once

#include "Curtain/ScreenWatcher.h"
#include "core/ShareDetector.h"
#include "platform/MainQueue.h"
#include "platform/Subscription.h"
#include "platform/Workspace.h"

#include <functional>
#include <set>
#include <string>

namespace Curtain {

/// Asks every three seconds whether a call may be going on, and at once when there is news of who watches the
/// screen, and reports changes. While it is not known
/// whether the screen is watched, nothing changes. Main thread only.
class ShareMonitor {
public:
    /// The services outlive the monitor.
    ShareMonitor(Platform::ScreenWatcherProbe& probe, Platform::Workspace& workspace,
                 Platform::MainQueue& mainQueue);

    /// Apps whose running counts as a sign of a call.
    std::set<std::string> triggerBundleIDs;
    std::function<void(CurtainCore::DetectionConfidence)> onConfidenceChanged;

    void start();

private:
    void poll();
    void lookNow();
    void tick();

    Platform::ScreenWatcherProbe& probe_;
    ScreenWatcher watcher_;
    Platform::Workspace& workspace_;
    Platform::MainQueue& mainQueue_;
    CurtainCore::ShareDetector detector_;
    Platform::Subscription timer_;
    Platform::Subscription news_;
    CurtainCore::DetectionConfidence lastConfidence_ = CurtainCore::DetectionConfidence::none;
};

} // namespace Curtain
