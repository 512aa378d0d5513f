#pragma once

#include "hotkeys/KeyCodes.h"
#include "platform/Keyboard.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace KeyboardShortcuts {

/// A key combination in the hot-key service's terms.
struct Shortcut {
    /// Virtual key code: the position of the key, whatever the layout writes there.
    std::int64_t carbonKeyCode = 0;
    /// Bits of `CarbonModifier`.
    std::int64_t carbonModifiers = 0;

    bool operator==(const Shortcut&) const = default;

    /// For people: "Ctrl+Alt+Super+H", with the key as a US keyboard has it.
    std::string description() const;
    /// As this desktop writes it and with the key as the user's layout has it.
    std::string description(Platform::Keyboard& keyboard) const;
};

/// The stored form: a JSON object with the two numbers.
std::string encodeShortcut(const Shortcut& shortcut);
/// Absent when the text is not such an object.
std::optional<Shortcut> decodeShortcut(std::string_view text);

} // namespace KeyboardShortcuts

template <>
struct std::hash<KeyboardShortcuts::Shortcut> {
    std::size_t operator()(const KeyboardShortcuts::Shortcut& shortcut) const noexcept {
        const std::hash<std::int64_t> hashOf;
        return hashOf(shortcut.carbonKeyCode) * 31U + hashOf(shortcut.carbonModifiers);
    }
};
