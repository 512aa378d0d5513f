#include "hotkeys/KeyboardShortcuts.h"

#include <algorithm>
#include <utility>

namespace KeyboardShortcuts {

KeyboardShortcuts::KeyboardShortcuts(CurtainCore::UserDefaults& defaults, Platform::HotKeyService& service,
                                     Platform::Log& log)
    : store_(defaults),
      center_(service, log) {}

Name KeyboardShortcuts::name(std::string rawValue, std::optional<Shortcut> defaultShortcut) {
    Name name{std::move(rawValue), defaultShortcut};
    store_.writeDefaultIfAbsent(name);
    return name;
}

std::optional<Shortcut> KeyboardShortcuts::getShortcut(const Name& name) const {
    return store_.shortcut(name);
}

void KeyboardShortcuts::setShortcut(const std::optional<Shortcut>& shortcut, const Name& name) {
    if (!shortcut && !store_.shortcut(name)) {
        return;
    }
    if (shortcut) {
        store_.write(*shortcut, name);
    } else {
        store_.clear(name);
    }
    if (const auto registered = registered_.extract(name.rawValue)) {
        const bool isShared = std::ranges::any_of(
            registered_, [&](const auto& other) { return other.second == registered.mapped(); });
        if (!isShared) {
            center_.unregisterShortcut(registered.mapped());
        }
    }
    registerIfNeeded(name);
    observers_.tell({shortcutByNameDidChange, {{nameKey, name}}});
}

bool KeyboardShortcuts::isRefused(const Name& name) const {
    const auto registered = registered_.find(name.rawValue);
    return registered != registered_.end() && store_.shortcut(name) == registered->second &&
           !center_.holds(registered->second);
}

Platform::Subscription KeyboardShortcuts::onKeyUp(const Name& name, Action action) {
    auto subscription = keyUpActions_[name.rawValue].add(std::move(action));
    registerIfNeeded(name);
    return subscription;
}

Platform::Subscription KeyboardShortcuts::observeShortcutByNameDidChange(Observer observer) {
    return observers_.add(std::move(observer));
}

Platform::Subscription KeyboardShortcuts::pause() {
    center_.pause();
    return Platform::Subscription([this] { center_.resume(); });
}

void KeyboardShortcuts::registerIfNeeded(const Name& name) {
    const auto shortcut = store_.shortcut(name);
    if (shortcut && !keyUpActions_[name.rawValue].isEmpty()) {
        registered_.insert_or_assign(name.rawValue, *shortcut);
        center_.registerShortcut(*shortcut, nullptr, [this](const Shortcut& released) { keyUp(released); });
    }
}

void KeyboardShortcuts::keyUp(const Shortcut& shortcut) {
    for (const auto& [name, registered] : std::map(registered_)) {
        if (registered == shortcut) {
            keyUpActions_[name].tell();
        }
    }
}

} // namespace KeyboardShortcuts
