#include "Curtain/HotkeyManager.h"

namespace Curtain {

HotkeyManager::HotkeyManager(KeyboardShortcuts::KeyboardShortcuts& shortcuts) : shortcuts_(shortcuts) {}

void HotkeyManager::start() {
    name_ = togglePrivacy(shortcuts_);
    keyUp_ = shortcuts_.onKeyUp(*name_, [this] {
        if (onToggle) {
            onToggle();
        }
    });
}

std::optional<KeyboardShortcuts::Shortcut> HotkeyManager::shortcut() const {
    return name_ && !shortcuts_.isRefused(*name_) ? shortcuts_.getShortcut(*name_) : std::nullopt;
}

KeyboardShortcuts::Name HotkeyManager::togglePrivacy(KeyboardShortcuts::KeyboardShortcuts& shortcuts) {
    using namespace KeyboardShortcuts;
    constexpr auto flags = ModifierFlag::control | ModifierFlag::option | ModifierFlag::command;
    return shortcuts.name("togglePrivacy", Shortcut{KeyCode::h, carbonModifiers(flags)});
}

} // namespace Curtain
