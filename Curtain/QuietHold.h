#pragma once

#include "Curtain/ScreenWatcher.h"
#include "platform/DoNotDisturb.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Subscription.h"
#include "platform/UserNotificationCenter.h"

#include <functional>

namespace Curtain {

/// When the desktop's Do Not Disturb is held, and when it is given back. Main thread only.
class QuietHold {
public:
    /// The services outlive this object.
    QuietHold(Platform::DoNotDisturb& doNotDisturb, Platform::UserNotificationCenter& center,
              const ScreenWatcher& screenWatcher, Platform::MainQueue& mainQueue);
    /// Privacy mode ends with the program. What must not be given back yet waits for the next run.
    ~QuietHold();
    QuietHold(const QuietHold&) = delete;
    QuietHold& operator=(const QuietHold&) = delete;

    /// Holds it once the notices are out that have been posted so far.
    void begin();
    /// Gives back what is held, be it since an earlier run: after a while, so that a share that follows does
    /// not begin with notices. A desktop that then shows what it held does so only after the share.
    void end();
    /// Whether it is held, or not given back yet.
    bool isHeld() const { return doNotDisturb_.isHeld(); }
    /// Runs `task` once notices can be seen again: at once where nothing is held, else after what `end` has
    /// begun. Not at all if `begin` or `end` is called before, nor for a `task` that another one follows.
    void whenSeen(std::function<void()> task);

private:
    void hold();
    void count();
    bool waitsForShare();
    void lookForShare();

    Platform::DoNotDisturb& doNotDisturb_;
    Platform::UserNotificationCenter& center_;
    const ScreenWatcher& screenWatcher_;
    Platform::MainQueue& mainQueue_;
    /// What is not known of the screen is as it was.
    bool isShared_ = false;
    /// Until it is given back; below zero, since then.
    int secondsLeft_ = 0;
    std::function<void()> onSeen_;
    Platform::Subscription countdown_;
    /// Of what is to be held soon.
    Platform::Lifetime beginning_;
};

} // namespace Curtain
