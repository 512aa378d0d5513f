#pragma once

#include <xkbcommon/xkbcommon.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// A key combination as a desktop's list names it: by what the key means, not by its position.
struct Accelerator {
    /// In the hot-key service's bits.
    std::int64_t modifiers = 0;
    xkb_keysym_t symbol = XKB_KEY_NoSymbol;

    bool operator==(const Accelerator&) const = default;

    /// "<Control><Alt>Delete", as GTK, GNOME and Xfce write it. Absent when the text is no combination, or
    /// one with modifiers that shortcuts do not have.
    static std::optional<Accelerator> fromGtk(std::string_view text);
    /// "Mod4+Shift+q", as i3 and sway write it.
    static std::optional<Accelerator> fromI3(std::string_view text);
};

/// A combination to look for.
struct WantedShortcut {
    std::int64_t modifiers = 0;
    /// All that the key can mean.
    std::vector<xkb_keysym_t> symbols;

    bool matches(const std::optional<Accelerator>& accelerator) const;
};

/// One list of a desktop's shortcuts.
class ShortcutList {
public:
    using Answer = std::function<void(bool isTaken)>;

    virtual ~ShortcutList() = default;

    /// `answer` is called at most once, perhaps from inside this call, and not after this list is gone.
    virtual void ask(const WantedShortcut& wanted, Answer answer) = 0;
};

} // namespace LinuxPlatform
