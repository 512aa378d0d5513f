#pragma once

#include "platform/linux/windows/i3/I3Tree.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Where a window stood in the layout before it was taken from there, with all that is needed to put it back
/// when what was around it has changed.
struct I3Place {
    /// One of the containers side by side in a group.
    struct Item {
        /// In the layout's order; one for a window that stands in the group itself.
        std::vector<WindowId> windows;
        /// Of the container; 0 for a window that stands in the group itself.
        std::int64_t group = 0;
        /// Empty where it is not known, as of what is fullscreen.
        I3Rect rect;

        bool operator==(const Item&) const = default;
    };
    /// A group that the window was in.
    struct Level {
        std::string layout;
        std::vector<Item> items;
        /// Which of the items was the window, or held it.
        std::size_t index = 0;

        bool operator==(const Level&) const = default;
    };

    /// Which the window is of, where it is known: another one's window may have the same number later.
    std::optional<std::uint32_t> process;
    std::string workspace;
    std::string output;
    bool isFloating = false;
    /// Of what floats, the window or its group; of no meaning for a window that was fullscreen.
    I3Rect rect;
    bool isFullscreen = false;
    bool isSticky = false;
    bool isOfScratchpad = false;
    /// Was the one in view of its tabs or of its stack.
    bool isOnTop = false;
    std::string border;
    int borderWidth = 0;
    /// From the workspace down, or from the group that floats; none for a window that floats itself.
    std::vector<Level> levels;

    bool operator==(const I3Place&) const = default;

    static I3Place of(const I3Leaf& leaf);
    /// Takes the sizes of those groups that are the same there.
    void takeSizes(const I3Place& other);
    /// On one line.
    std::string text() const;
    /// Absent where the text is no place.
    static std::optional<I3Place> fromText(const std::string& text);
};

} // namespace LinuxPlatform
