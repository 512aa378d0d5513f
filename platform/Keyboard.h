#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Platform {

/// How this desktop writes the modifiers of a key combination.
struct ModifierStyle {
    /// What it calls the command key: "Super" or "Meta".
    std::string command = "Super";
    /// Whether that one stands before the others, not behind them.
    bool isCommandFirst = false;
};

/// The keyboard and its layout. Keys are told by the hot-key service's virtual key codes: positions, whatever
/// the layout writes there. Main thread only.
class Keyboard {
public:
    virtual ~Keyboard() = default;

    /// The key that a window's key event calls by this number; absent for a key without a virtual key code.
    virtual std::optional<std::int64_t> keyCode(std::uint32_t scanCode) = 0;
    /// What the user's present layout writes with the key alone, in capitals; absent for keys that write
    /// nothing that could be seen.
    virtual std::optional<std::string> keyLabel(std::int64_t keyCode) = 0;
    virtual ModifierStyle modifierStyle() = 0;
    /// The sound for a key that is not accepted.
    virtual void beep() = 0;
};

} // namespace Platform
