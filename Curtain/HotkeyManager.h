#pragma once

#include "hotkeys/KeyboardShortcuts.h"

#include <functional>

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

    /// The name of the shortcut, which is Control+Option+Command+H until the user chooses otherwise.
    static KeyboardShortcuts::Name togglePrivacy(KeyboardShortcuts::KeyboardShortcuts& shortcuts);

private:
    KeyboardShortcuts::KeyboardShortcuts& shortcuts_;
    Platform::Subscription keyUp_;
};

} // namespace Curtain
