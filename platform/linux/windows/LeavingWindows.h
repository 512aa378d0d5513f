#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/windows/WindowId.h"

#include <optional>
#include <set>
#include <span>

namespace LinuxPlatform {

/// Windows that were asked to hide a moment ago and may still be in view. While several windows are hidden,
/// the session passes the focus from one to the next. Nobody chose that, so it is not to be announced. Main
/// thread only.
class LeavingWindows {
public:
    /// `queue` outlives this object.
    explicit LeavingWindows(const Platform::MainQueue& queue) : queue_(queue) {}

    void add(std::span<const WindowId> windows);
    /// To be told what of them is hidden by now, has come back or will not be hidden.
    void remove(const WindowPredicate& hasSettled);
    /// For as long as a window system takes to hide what it was asked last.
    bool contains(WindowId window) const;
    /// That time has passed since the last was asked.
    bool isOver() const;

private:
    const Platform::MainQueue& queue_;
    std::set<WindowId> windows_;
    std::optional<Platform::MainQueue::Seconds> lastAdded_;
};

} // namespace LinuxPlatform
