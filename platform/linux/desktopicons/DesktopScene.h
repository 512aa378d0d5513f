#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// What the session shows of itself at one moment.
struct DesktopScene {
    struct Window {
        std::string className;
        std::optional<std::uint32_t> process;
    };

    /// The names on the session bus; absent when it does not answer.
    std::optional<std::set<std::string>> busNames;
    /// Those on the screen that say that they are the desktop.
    std::vector<Window> desktopWindows;
    /// Whether nothing can be drawn in another way than by a window that is looked at here.
    bool isEveryWindowKnown = false;

    bool hasName(const std::string& name) const { return busNames && busNames->contains(name); }

    /// Null when there is none.
    const Window* desktopWindowOf(std::string_view className) const {
        for (const auto& window : desktopWindows) {
            if (window.className == className) {
                return &window;
            }
        }
        return nullptr;
    }
};

} // namespace LinuxPlatform
