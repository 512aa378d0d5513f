#pragma once

#include "platform/linux/windows/WindowId.h"

#include <set>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// How windows lay above one another before they were hidden. Window managers change that when a window goes
/// and when it comes back. All orders are from bottom to top. Main thread only.
class StackingMemory {
public:
    /// Whether the places of all of them are remembered already: `noteHiding` then needs no order.
    bool knows(std::span<const WindowId> windows) const;
    /// To be called before `windows` are hidden. Of what is known already the first place counts.
    void noteHiding(std::span<const WindowId> windows, std::span<const WindowId> order);
    /// `order` with `returned` in their places: below all that lay above them and what is new since, as if
    /// they had never been away. The other windows stay as they are.
    std::vector<WindowId> arrange(std::vector<WindowId> order, const std::set<WindowId>& returned) const;
    /// Windows that are back in their places. Nothing is remembered once all are.
    void forgetHiding(const WindowPredicate& isBack);
    /// Windows that do not exist any more: others may get their identifiers.
    void forget(std::span<const WindowId> gone);

private:
    std::vector<WindowId> order_;
    std::set<WindowId> hidden_;
};

} // namespace LinuxPlatform
