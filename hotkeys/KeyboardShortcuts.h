#pragma once

#include "hotkeys/HotKeyCenter.h"
#include "hotkeys/Name.h"
#include "hotkeys/ShortcutStore.h"
#include "platform/Subscribers.h"
#include "platform/Subscription.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace KeyboardShortcuts {

/// Posted after each change of a name's shortcut.
struct Notification {
    std::string_view name;
    std::map<std::string, Name> userInfo;
};

/// The user's global shortcuts: what is stored under a name is registered with the system once somebody
/// listens for the name. Main thread only.
class KeyboardShortcuts {
public:
    using Action = std::function<void()>;
    using Observer = std::function<void(const Notification&)>;

    static constexpr std::string_view shortcutByNameDidChange = "KeyboardShortcuts_shortcutByNameDidChange";
    /// Of a notification's user info: the name whose shortcut has changed.
    static constexpr const char* nameKey = "name";

    /// All outlive this object.
    KeyboardShortcuts(CurtainCore::UserDefaults& defaults, Platform::HotKeyService& service,
                      Platform::Log& log);

    /// A name; when nothing is stored under it, its default is written at once.
    Name name(std::string rawValue, std::optional<Shortcut> defaultShortcut = std::nullopt);

    std::optional<Shortcut> getShortcut(const Name& name) const;
    /// Takes effect at once, in the store and in the system; announced to the observers.
    void setShortcut(const std::optional<Shortcut>& shortcut, const Name& name);
    /// Whether somebody listens for the name and the system has refused its shortcut.
    bool isRefused(const Name& name) const;

    /// Calls `action` when the key of the name's shortcut is let go, for as long as the subscription lives;
    /// it ends before this object does.
    Platform::Subscription onKeyUp(const Name& name, Action action);

    /// Gives all keys back to whoever has the keyboard, for as long as the subscription lives; one at a time.
    /// It ends before this object does.
    Platform::Subscription pause();

    /// Calls `observer` with each notification of the kind `shortcutByNameDidChange`.
    Platform::Subscription observeShortcutByNameDidChange(Observer observer);

private:
    void registerIfNeeded(const Name& name);
    void keyUp(const Shortcut& shortcut);

    ShortcutStore store_;
    HotKeyCenter center_;
    /// By the name's raw value.
    std::map<std::string, Platform::Subscribers<>> keyUpActions_;
    /// What was registered, or tried to be, last. Differs from the store when the stored text was edited
    /// meanwhile.
    std::map<std::string, Shortcut> registered_;
    Platform::Subscribers<Notification> observers_;
};

} // namespace KeyboardShortcuts
