#pragma once

#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/toplevels/ForeignToplevels.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// The windows that a compositor has told of. Main thread only.
class ToplevelModel {
public:
    /// What is different now.
    struct Change {
        /// New, or that of another app.
        bool isOpened = false;
        /// Minimised before, and not any more.
        bool isReturned = false;
        bool isActivated = false;
    };

    Change update(WindowId window, const ForeignToplevels::State& state);
    void close(WindowId window);
    void clear();
    /// What the windows are is the same, and what that says is not.
    void touch() { ++generation_; }

    /// Changes whenever `windows` does.
    std::uint64_t generation() const { return generation_; }
    /// Oldest first; valid until the next change.
    const std::vector<Window>& windows() const { return windows_; }
    /// Null when there is no such window; valid until the next change.
    const Window* find(WindowId window) const;
    std::optional<WindowId> active() const { return active_; }

private:
    std::vector<Window> windows_;
    std::optional<WindowId> active_;
    std::uint64_t generation_ = 1;
};

} // namespace LinuxPlatform
