#include "hotkeys/ShortcutStore.h"

namespace KeyboardShortcuts {
namespace {

std::string keyFor(const Name& name) {
    return "KeyboardShortcuts_" + name.rawValue;
}

} // namespace

ShortcutStore::ShortcutStore(CurtainCore::UserDefaults& defaults) : defaults_(defaults) {}

void ShortcutStore::writeDefaultIfAbsent(const Name& name) {
    if (name.defaultShortcut && !defaults_.contains(keyFor(name))) {
        write(*name.defaultShortcut, name);
    }
}

std::optional<Shortcut> ShortcutStore::shortcut(const Name& name) const {
    const auto text = defaults_.string(keyFor(name));
    return text ? decodeShortcut(*text) : std::nullopt;
}

void ShortcutStore::write(const Shortcut& shortcut, const Name& name) {
    defaults_.setString(keyFor(name), encodeShortcut(shortcut));
}

void ShortcutStore::clear(const Name& name) {
    if (name.defaultShortcut) {
        defaults_.setBool(keyFor(name), false);
    } else {
        defaults_.remove(keyFor(name));
    }
}

} // namespace KeyboardShortcuts
