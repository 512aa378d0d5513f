#pragma once

#include "hotkeys/KeyboardShortcuts.h"

#include <functional>
#include <optional>

namespace Curtain {

/// The program's one global shortcut, which switches privacy mode.
class HotkeyManager {
public:
    /// `shortcuts` outlives the manager.
    explicit HotkeyManager(KeyboardShortcuts::KeyboardShortcuts& shortcuts);

    /// Called when the shortcut's key is let go; set before `start`.
    std::function<void()> onToggle;

    /// Called once, at launch. A first launch gets the default combination.
    void start();

    /// The combination that is listened for; none before the start, or where the user has cleared it or the
    /// system has refused it.
    std::optional<KeyboardShortcuts::Shortcut> shortcut() const;

    /// The name of the shortcut, which is Control+Option+Command+H until the user chooses otherwise.
    static KeyboardShortcuts::Name togglePrivacy(KeyboardShortcuts::KeyboardShortcuts& shortcuts);

private:
    KeyboardShortcuts::KeyboardShortcuts& shortcuts_;
    std::optional<KeyboardShortcuts::Name> name_;
    Platform::Subscription keyUp_;
};

} // namespace Curtain
