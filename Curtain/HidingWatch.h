#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/SystemVersion.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace Curtain {

/// Knows whether apps can be hidden, and asks on while the session has not answered or its answer matters.
/// Main thread only.
class HidingWatch {
public:
    /// Both outlive the watch.
    HidingWatch(Platform::SystemVersion& system, Platform::MainQueue& mainQueue);

    /// Called when the session answers differently from before.
    std::function<void()> onAnswer;
    /// Whether an answer may still change in a way that somebody has to hear of; never, unless set.
    std::function<bool()> isFollowed;

    std::optional<Platform::HidingObstacle> obstacle() const { return system_.hidingObstacle(); }
    /// Whether it is known that nothing can be hidden.
    bool isHidingImpossible() const;

    /// Looks on as long as the answer is still due or followed: soon at first, and ever more seldom while it
    /// stays the same.
    void begin();
    void end();

private:
    bool isToBeWatched() const;
    void lookLater();
    void look();

    Platform::SystemVersion& system_;
    Platform::MainQueue& mainQueue_;
    /// At the last look.
    std::optional<Platform::HidingObstacle> seen_;
    Platform::MainQueue::Seconds pause_{0};
    /// The only look that is still to happen is the last one.
    std::uint64_t lastLook_ = 0;
    bool isWatching_ = false;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
