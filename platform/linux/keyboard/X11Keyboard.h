#pragma once

#include "platform/HotKeyService.h"
#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// The keyboard as it was when this was made: which X key code a physical key has, and which modifier bits
/// the modifiers have.
class X11Keyboard {
public:
    struct Combination {
        xcb_keycode_t keyCode = 0;
        std::uint16_t modifiers = 0;

        bool operator==(const Combination&) const = default;
    };

    /// Four round trips.
    explicit X11Keyboard(X11Connection& connection);

    /// Absent when this keyboard lacks the key or one of the modifiers.
    std::optional<Combination> translate(const Platform::HotKeyCombination& combination) const;

    /// Every combination of the locks (Caps, Num, Scroll), none included.
    const std::vector<std::uint16_t>& lockCombinations() const { return lockCombinations_; }
    /// The bits that tell one combination from another.
    std::uint16_t significantModifiers() const;

private:
    void readKeyNames(X11Connection& connection);
    void readModifiers(X11Connection& connection);

    /// By the names of the X Keyboard Extension: "AC06" is the sixth key of the row that begins with A on a
    /// US keyboard.
    std::map<std::string, xcb_keycode_t, std::less<>> keyCodes_;
    std::uint16_t alt_ = 0;
    std::uint16_t super_ = 0;
    std::vector<std::uint16_t> lockCombinations_;
};

} // namespace LinuxPlatform
