#include "Curtain/HotkeyManager.h"

namespace Curtain {

HotkeyManager::HotkeyManager(KeyboardShortcuts::KeyboardShortcuts& shortcuts) : shortcuts_(shortcuts) {}

void HotkeyManager::start() {
    keyUp_ = shortcuts_.onKeyUp(togglePrivacy(shortcuts_), [this] {
        if (onToggle) {
            onToggle();
        }
    });
}

KeyboardShortcuts::Name HotkeyManager::togglePrivacy(KeyboardShortcuts::KeyboardShortcuts& shortcuts) {
    using namespace KeyboardShortcuts;
    constexpr auto flags = ModifierFlag::control | ModifierFlag::option | ModifierFlag::command;
    return shortcuts.name("togglePrivacy", Shortcut{KeyCode::h, carbonModifiers(flags)});
}

} // namespace Curtain
