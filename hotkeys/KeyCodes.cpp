#include "hotkeys/KeyCodes.h"

#include <array>
#include <utility>

namespace KeyboardShortcuts {
namespace {

constexpr std::array<std::pair<std::uint64_t, std::int64_t>, 5> modifierPairs{{
    {ModifierFlag::command, CarbonModifier::command},
    {ModifierFlag::shift, CarbonModifier::shift},
    {ModifierFlag::option, CarbonModifier::option},
    {ModifierFlag::control, CarbonModifier::control},
    {ModifierFlag::function, CarbonModifier::function},
}};

// Indexed by key code; an empty name is a code without a key.
constexpr std::array<std::string_view, 128> keyNames{
    "A",     "S",         "D",      "F",         "H",         "G",      "Z",     "X",        // 0
    "C",     "V",         "",       "B",         "Q",         "W",      "E",     "R",        // 8
    "Y",     "T",         "1",      "2",         "3",         "4",      "6",     "5",        // 16
    "=",     "9",         "7",      "-",         "8",         "0",      "]",     "O",        // 24
    "U",     "[",         "I",      "P",         "Enter",     "L",      "J",     "'",        // 32
    "K",     ";",         "\\",     ",",         "/",         "N",      "M",     ".",        // 40
    "Tab",   "Space",     "`",      "Backspace", "",          "Escape", "",      "",         // 48
    "",      "",          "",       "",          "",          "",       "",      "",         // 56
    "F17",   "Num .",     "",       "Num *",     "",          "Num +",  "",      "Num Lock", // 64
    "",      "",          "",       "Num /",     "Num Enter", "",       "Num -", "F18",      // 72
    "F19",   "Num =",     "Num 0",  "Num 1",     "Num 2",     "Num 3",  "Num 4", "Num 5",    // 80
    "Num 6", "Num 7",     "F20",    "Num 8",     "Num 9",     "",       "",      "",         // 88
    "F5",    "F6",        "F7",     "F3",        "F8",        "F9",     "",      "F11",      // 96
    "",      "F13",       "F16",    "F14",       "",          "F10",    "Menu",  "F12",      // 104
    "",      "F15",       "Insert", "Home",      "Page Up",   "Delete", "F4",    "End",      // 112
    "F2",    "Page Down", "F1",     "Left",      "Right",     "Down",   "Up",    "",         // 120
};

} // namespace

std::int64_t carbonModifiers(std::uint64_t flags) {
    std::int64_t result = 0;
    for (const auto& [flag, carbon] : modifierPairs) {
        if ((flags & flag) != 0) {
            result |= carbon;
        }
    }
    return result;
}

std::uint64_t modifierFlags(std::int64_t carbon) {
    std::uint64_t result = 0;
    for (const auto& [flag, carbonFlag] : modifierPairs) {
        if ((carbon & carbonFlag) != 0) {
            result |= flag;
        }
    }
    return result;
}

bool isFunctionKey(std::int64_t keyCode) {
    const auto name = keyName(keyCode);
    return name && name->size() > 1 && name->front() == 'F';
}

std::optional<std::string_view> keyName(std::int64_t keyCode) {
    if (keyCode < 0 || keyCode >= static_cast<std::int64_t>(keyNames.size())) {
        return std::nullopt;
    }
    const auto name = keyNames[static_cast<std::size_t>(keyCode)];
    return name.empty() ? std::nullopt : std::optional(name);
}

} // namespace KeyboardShortcuts
