#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/SystemVersion.h"

#include <functional>
#include <optional>

namespace Curtain {

/// Knows whether apps can be hidden, and asks on while the session has not answered. Main thread only.
class HidingWatch {
public:
    /// Both outlive the watch.
    HidingWatch(Platform::SystemVersion& system, Platform::MainQueue& mainQueue);

    /// Called when the session has answered after all.
    std::function<void()> onAnswer;

    std::optional<Platform::HidingObstacle> obstacle() const { return system_.hidingObstacle(); }
    /// Whether it is known that nothing can be hidden.
    bool isHidingImpossible() const;

    /// Waits for the session's answer where it is still due.
    void begin();
    void end() { isWaiting_ = false; }

private:
    void lookLater();

    Platform::SystemVersion& system_;
    Platform::MainQueue& mainQueue_;
    bool isWaiting_ = false;
    bool isLookDue_ = false;
    Platform::Lifetime lifetime_;
};

} // namespace Curtain
