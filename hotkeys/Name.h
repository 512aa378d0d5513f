#pragma once

#include "hotkeys/Shortcut.h"

#include <optional>
#include <string>

namespace KeyboardShortcuts {

/// Under which a shortcut is stored, registered and announced. Made by `KeyboardShortcuts::name`.
struct Name {
    std::string rawValue;
    /// What a user gets who never chose anything.
    std::optional<Shortcut> defaultShortcut;

    bool operator==(const Name& other) const { return rawValue == other.rawValue; }
};

} // namespace KeyboardShortcuts
