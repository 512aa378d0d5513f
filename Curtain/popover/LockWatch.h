#pragma once

#include "platform/Departures.h"
#include "platform/EventMonitors.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Subscription.h"

#include <functional>
#include <optional>

namespace Curtain {

/// Knows whether the session is locked. Not every locker tells of its end: whoever uses a window of the
/// program is back. Main thread only.
class LockWatch {
public:
    /// All of them outlive the watch.
    LockWatch(Platform::Departures& departures, Platform::EventMonitors& monitors,
              Platform::MainQueue& mainQueue);

    /// Also where nothing has changed.
    std::function<void()> onLock;
    std::function<void(bool wasLocked)> onUnlock;

    void start();
    bool isLocked() const { return lock_.has_value(); }

private:
    void changed(bool isLocked);
    void awaitReturn();

    Platform::Departures& departures_;
    Platform::EventMonitors& monitors_;
    Platform::MainQueue& mainQueue_;
    std::optional<Platform::Lifetime> lock_;
    Platform::Subscription observer_;
    Platform::Subscription returnMonitor_;
};

} // namespace Curtain
