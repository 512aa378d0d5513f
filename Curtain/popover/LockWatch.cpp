#include "Curtain/popover/LockWatch.h"

#include <cstdint>

namespace Curtain {
namespace {

namespace EventType = Platform::EventType;

/// A locker that was asked to lock covers the screen by then. Until then the pointer may be under way yet.
constexpr Platform::MainQueue::Seconds lockerAppears{5.0};

/// Those that only a present user brings about.
constexpr std::uint64_t presenceEvents =
    1U << EventType::keyDown | 1U << EventType::mouseMoved | 1U << EventType::leftMouseDown;

} // namespace

LockWatch::LockWatch(Platform::Departures& departures, Platform::EventMonitors& monitors,
                     Platform::MainQueue& mainQueue)
    : departures_(departures),
      monitors_(monitors),
      mainQueue_(mainQueue) {}

void LockWatch::start() {
    observer_ = departures_.addLockObserver([this](bool isLocked) { changed(isLocked); });
}

void LockWatch::changed(bool isLocked) {
    returnMonitor_ = {};
    if (isLocked) {
        lock_.emplace();
        mainQueue_.asyncAfter(lockerAppears, lock_->weak([this] { awaitReturn(); }));
        onLock();
        return;
    }
    const bool wasLocked = lock_.has_value();
    lock_.reset();
    onUnlock(wasLocked);
}

void LockWatch::awaitReturn() {
    returnMonitor_ = monitors_.addLocalMonitor(presenceEvents, [this](const auto& /*event*/) {
        // It cannot go while it is told.
        mainQueue_.async(lock_->weak([this] { changed(false); }));
        return false;
    });
}

} // namespace Curtain
