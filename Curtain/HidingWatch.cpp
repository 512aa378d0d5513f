#include "Curtain/HidingWatch.h"

#include <utility>

namespace Curtain {
namespace {

constexpr Platform::MainQueue::Seconds lookInterval{0.25};

} // namespace

HidingWatch::HidingWatch(Platform::SystemVersion& system, Platform::MainQueue& mainQueue)
    : system_(system),
      mainQueue_(mainQueue) {}

bool HidingWatch::isHidingImpossible() const {
    const auto now = obstacle();
    return now && now != Platform::HidingObstacle::notKnownYet;
}

void HidingWatch::begin() {
    if (obstacle() == Platform::HidingObstacle::notKnownYet) {
        isWaiting_ = true;
        lookLater();
    }
}

void HidingWatch::lookLater() {
    if (std::exchange(isLookDue_, true)) {
        return;
    }
    mainQueue_.asyncAfter(lookInterval, lifetime_.weak([this] {
        isLookDue_ = false;
        if (!isWaiting_) {
            return;
        }
        if (obstacle() == Platform::HidingObstacle::notKnownYet) {
            lookLater();
            return;
        }
        isWaiting_ = false;
        if (onAnswer) {
            onAnswer();
        }
    }));
}

} // namespace Curtain
