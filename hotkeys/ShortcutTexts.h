#pragma once

#include <string_view>

/// The texts of the recorder, by their keys. UTF-8, they live as long as the program.
namespace KeyboardShortcuts::ShortcutTexts {

inline constexpr std::string_view usedByMenuItem = "keyboard_shortcut_used_by_menu_item";
inline constexpr std::string_view disallowed = "keyboard_shortcut_disallowed";
inline constexpr std::string_view usedBySystem = "keyboard_shortcut_used_by_system";
inline constexpr std::string_view canBeChanged = "keyboard_shortcuts_can_be_changed";
inline constexpr std::string_view forceUse = "force_use_shortcut";
inline constexpr std::string_view ok = "ok";
/// In its place where the refused one could be used all the same.
inline constexpr std::string_view chooseAnother = "choose_another_shortcut";
/// In the field: nothing is recorded, and a combination is waited for.
inline constexpr std::string_view recordShortcut = "record_shortcut";
inline constexpr std::string_view pressShortcut = "press_shortcut";
inline constexpr std::string_view clearShortcut = "clear_shortcut";

/// In a language, by its two-letter code; in English when there is no text in it. Empty for an unknown key.
std::string_view string(std::string_view key, std::string_view lang);

} // namespace KeyboardShortcuts::ShortcutTexts
