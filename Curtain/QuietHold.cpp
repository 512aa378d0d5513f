#include "Curtain/QuietHold.h"

namespace Curtain {
namespace {

using Platform::MainQueue;

constexpr int secondsUntilGivenBack = 4;
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
    waitsForShare();
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
    secondsLeft_ = secondsUntilGivenBack;
    countdown_ = mainQueue_.repeating(second, [this] { count(); });
}

void QuietHold::count() {
    if (waitsForShare()) {
        secondsLeft_ = secondsUntilGivenBack;
    } else if (--secondsLeft_ == 0) {
        countdown_ = {};
        doNotDisturb_.giveBack();
    }
}

bool QuietHold::waitsForShare() {
    const auto isShared = screenWatcher_.fn ? screenWatcher_.fn() : false;
    isShared_ = isShared.value_or(isShared_);
    return isShared_ && doNotDisturb_.habits().showsHeldAfterwards && doNotDisturb_.isHeld();
}

} // namespace Curtain
