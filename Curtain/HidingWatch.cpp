#include "Curtain/HidingWatch.h"

#include <algorithm>
#include <utility>

namespace Curtain {
namespace {

constexpr Platform::MainQueue::Seconds firstPause{0.25};
constexpr Platform::MainQueue::Seconds longestPause{2};

} // namespace

HidingWatch::HidingWatch(Platform::SystemVersion& system, Platform::MainQueue& mainQueue)
    : system_(system),
      mainQueue_(mainQueue) {}

bool HidingWatch::isHidingImpossible() const {
    const auto now = obstacle();
    return now && now != Platform::HidingObstacle::notKnownYet;
}

void HidingWatch::begin() {
    // A change that has not been told yet is still to be told, and so is an answer that is still due.
    if (const auto now = obstacle(); !isWatching_ || now == Platform::HidingObstacle::notKnownYet) {
        seen_ = now;
    }
    isWatching_ = isToBeWatched();
    pause_ = firstPause;
    lookLater();
}

void HidingWatch::end() {
    isWatching_ = false;
}

bool HidingWatch::isToBeWatched() const {
    return seen_ == Platform::HidingObstacle::notKnownYet || (isFollowed && isFollowed());
}

void HidingWatch::lookLater() {
    if (!isWatching_) {
        return;
    }
    mainQueue_.asyncAfter(pause_, lifetime_.weak([this, number = ++lastLook_] {
        if (isWatching_ && number == lastLook_) {
            look();
        }
    }));
}

void HidingWatch::look() {
    const auto before = std::exchange(seen_, obstacle());
    const bool isDifferent = before != seen_;
    isWatching_ = isToBeWatched();
    pause_ = isDifferent ? firstPause : std::min(pause_ * 2, longestPause);
    lookLater();
    if (isDifferent && onAnswer) {
        onAnswer();
    }
}

} // namespace Curtain
