#include "Curtain/QuietHold.h"

#include <utility>

namespace Curtain {
namespace {

using Platform::MainQueue;

constexpr int secondsUntilGivenBack = 4;
/// The desktop has noticed by then that it was given back.
constexpr int secondsUntilHeeded = 2;
constexpr MainQueue::Seconds second{1};
/// A server of notices that does not answer may be holding them back for ever.
constexpr MainQueue::Seconds noticesPatience{1};

} // namespace

QuietHold::QuietHold(Platform::DoNotDisturb& doNotDisturb, Platform::UserNotificationCenter& center,
                     const ScreenWatcher& screenWatcher, MainQueue& mainQueue)
    : doNotDisturb_(doNotDisturb),
      center_(center),
      screenWatcher_(screenWatcher),
      mainQueue_(mainQueue) {}

QuietHold::~QuietHold() {
    if (!waitsForShare()) {
        doNotDisturb_.giveBack();
    }
}

void QuietHold::begin() {
    countdown_ = {};
    beginning_ = {};
    onSeen_ = nullptr;
    if (doNotDisturb_.habits().showsHeldAfterwards) {
        lookForShare();
    }
    const auto holdSoon = beginning_.weak([this] { hold(); });
    center_.whenDelivered(holdSoon);
    mainQueue_.asyncAfter(noticesPatience, holdSoon);
}

void QuietHold::hold() {
    beginning_ = {};
    doNotDisturb_.hold();
}

void QuietHold::end() {
    beginning_ = {};
    onSeen_ = nullptr;
    secondsLeft_ = secondsUntilGivenBack;
    countdown_ = mainQueue_.repeating(second, [this] { count(); });
}

void QuietHold::whenSeen(std::function<void()> task) {
    if (doNotDisturb_.isHeld()) {
        onSeen_ = std::move(task);
    } else {
        task();
    }
}

void QuietHold::count() {
    if (secondsLeft_ > 0 && waitsForShare()) {
        secondsLeft_ = secondsUntilGivenBack;
        return;
    }
    --secondsLeft_;
    if (secondsLeft_ == 0) {
        doNotDisturb_.giveBack();
    } else if (secondsLeft_ == -secondsUntilHeeded) {
        countdown_ = {};
        if (const auto task = std::exchange(onSeen_, nullptr)) {
            task();
        }
    }
}

bool QuietHold::waitsForShare() {
    // Whoever looks for one asks the whole desktop.
    if (!doNotDisturb_.habits().showsHeldAfterwards || !doNotDisturb_.isHeld()) {
        return false;
    }
    lookForShare();
    return isShared_;
}

void QuietHold::lookForShare() {
    const auto isShared = screenWatcher_.fn ? screenWatcher_.fn() : false;
    isShared_ = isShared.value_or(isShared_);
}

} // namespace Curtain
