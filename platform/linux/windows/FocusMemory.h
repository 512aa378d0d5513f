#pragma once

#include "platform/linux/windows/WindowId.h"

#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Which windows had the focus when they were hidden, so that they get it back.
class FocusMemory {
public:
    /// To be called before `windows` are hidden; `focused` has the focus at that time.
    void noteHiding(std::span<const WindowId> windows, std::optional<WindowId> focused);
    /// Of the windows that are meant, the one that was hidden first: the session passed the focus to the
    /// others in turn, which nobody chose.
    std::optional<WindowId> first(const WindowPredicate& isMeant) const;
    void forget(const WindowPredicate& isMeant);

private:
    /// In the order in which they were hidden.
    std::vector<WindowId> windows_;
};

} // namespace LinuxPlatform
