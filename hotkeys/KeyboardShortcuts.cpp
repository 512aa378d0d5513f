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
        center_.unregisterShortcut(registered.mapped());
    }
    registerIfNeeded(name);
    for (const auto& [token, observer] : std::map(observers_)) {
        observer(name);
    }
}

Platform::Subscription KeyboardShortcuts::onKeyUp(const Name& name, Action action) {
    const auto token = ++lastToken_;
    keyUpActions_.emplace(token, std::pair(name, std::move(action)));
    registerIfNeeded(name);
    return Platform::Subscription([this, token] { keyUpActions_.erase(token); });
}

Platform::Subscription KeyboardShortcuts::observeShortcutByNameDidChange(NameObserver observer) {
    const auto token = ++lastToken_;
    observers_.emplace(token, std::move(observer));
    return Platform::Subscription([this, token] { observers_.erase(token); });
}

void KeyboardShortcuts::registerIfNeeded(const Name& name) {
    const auto shortcut = store_.shortcut(name);
    const bool isListenedFor =
        std::ranges::any_of(keyUpActions_, [&](const auto& entry) { return entry.second.first == name; });
    if (shortcut && isListenedFor) {
        registered_.insert_or_assign(name.rawValue, *shortcut);
        center_.registerShortcut(*shortcut, nullptr, [this](const Shortcut& released) { keyUp(released); });
    }
}

void KeyboardShortcuts::keyUp(const Shortcut& shortcut) {
    for (const auto& [token, entry] : std::map(keyUpActions_)) {
        const auto registered = registered_.find(entry.first.rawValue);
        if (registered != registered_.end() && registered->second == shortcut) {
            entry.second();
        }
    }
}

} // namespace KeyboardShortcuts
