#pragma once

#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/windows/i3/I3Tree.h"

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

namespace LinuxPlatform {

/// The windows of a layout, with what the X server tells of those of X11. Main thread only.
class I3WindowList {
public:
    /// `x11` outlives the list; null without an X server.
    explicit I3WindowList(WindowSystem* x11) : x11_(x11) {}

    /// `tree` is the layout from now on, and lives until the next one.
    void setTree(const I3Tree& tree);
    /// Changes whenever `windows` does.
    std::uint64_t generation();
    /// In the order in which they were seen first; none before there is a layout.
    const std::vector<Window>& windows();
    std::optional<Window> find(WindowId window);

private:
    Window describe(const I3Leaf& leaf, const Window* x11) const;

    WindowSystem* x11_;
    const I3Tree* tree_ = nullptr;
    std::uint64_t treeGeneration_ = 1;
    std::uint64_t builtGeneration_ = 0;
    /// In which order the windows were seen first.
    std::unordered_map<WindowId, std::uint64_t> births_;
    std::uint64_t lastBirth_ = 0;
    std::vector<Window> windows_;
};

} // namespace LinuxPlatform
