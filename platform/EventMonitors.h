#pragma once

#include "platform/Event.h"
#include "platform/Subscription.h"

#include <cstdint>
#include <functional>

namespace Platform {

/// Watches what the user does. Masks are as for the status item. Callbacks run on the main thread.
class EventMonitors {
public:
    virtual ~EventMonitors() = default;

    /// Events that go to other programs.
    virtual Subscription addGlobalMonitor(std::uint64_t eventMask,
                                          std::function<void(const Event&)> callback) = 0;
    /// Events that go to this program, but for those of an open menu, before anything else sees them.
    /// `callback` returns whether it has dealt with the event, which then goes nowhere else.
    virtual Subscription addLocalMonitor(std::uint64_t eventMask,
                                         std::function<bool(const Event&)> callback) = 0;
};

} // namespace Platform
