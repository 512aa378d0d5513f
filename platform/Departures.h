#pragma once

#include "platform/Subscription.h"

#include <functional>

namespace Platform {

/// Tells when the user turns away from what is on the screen. Main thread only.
class Departures {
public:
    virtual ~Departures() = default;

    /// `handler` is called whenever the session is locked or another workspace comes into view, once or more
    /// often; never where the desktop tells of neither.
    virtual Subscription addObserver(std::function<void()> handler) = 0;
    /// `handler` is called when the session is locked and when it is unlocked, once or more often each. The
    /// end of a lock that is told by a mere request may not be told.
    virtual Subscription addLockObserver(std::function<void(bool isLocked)> handler) = 0;
};

} // namespace Platform
