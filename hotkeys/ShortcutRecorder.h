#pragma once

#include "hotkeys/KeyboardShortcuts.h"
#include "hotkeys/Name.h"
#include "platform/Keyboard.h"
#include "platform/Lifetime.h"
#include "platform/SystemShortcuts.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace KeyboardShortcuts {

/// A key press in a window.
struct KeyPress {
    /// Absent for keys without a virtual key code, such as the modifiers' own.
    std::optional<std::int64_t> keyCode;
    /// Bits of `ModifierFlag` and others.
    std::uint64_t modifierFlags = 0;
};

/// Why a combination was not taken.
struct ShortcutAlert {
    Shortcut shortcut;
    /// Keys of `ShortcutTexts`; `explanation` is empty for none.
    std::string_view message;
    std::string_view explanation;
    /// Whether the user may have the combination all the same.
    bool canForceUse = false;

    bool operator==(const ShortcutAlert&) const = default;
};

/// An item of the program's own menu or windows that acts on a combination. It is found by what the key
/// means, not by its place.
struct MenuItem {
    /// In capitals, or the key's name where it writes nothing: "W", "Page Up".
    std::string keyEquivalent;
    /// Bits of `ModifierFlag`.
    std::uint64_t modifierFlags = 0;
};

/// The rules of the field that records a name's shortcut while it has the focus. Main thread only.
class ShortcutRecorder {
public:
    /// All of them outlive the recorder.
    struct Services {
        KeyboardShortcuts& shortcuts;
        Platform::Keyboard& keyboard;
        Platform::SystemShortcuts& systemShortcuts;
    };

    /// `mainMenu` holds all combinations that have a meaning in the program's own windows.
    ShortcutRecorder(const Services& services, Name name, std::vector<MenuItem> mainMenu);

    /// The shortcut or whether it is being recorded has changed, by whomever.
    std::function<void()> onChange;
    std::function<void(const ShortcutAlert&)> onAlert;

    bool isRecording() const { return isRecording_; }
    /// Empty when there is no shortcut.
    std::string description() const;
    /// Whether the shortcut does nothing, for the system has refused it.
    bool isRefused() const { return services_.shortcuts.isRefused(name_); }
    /// Whether it is what a user has who never chose anything.
    bool isDefault() const { return services_.shortcuts.getShortcut(name_) == name_.defaultShortcut; }

    /// The field has the focus: until the end of the recording no shortcut of the program acts.
    void begin();
    void end();
    /// Returns whether the key is used up; one that is not goes the normal way.
    bool keyDown(const KeyPress& press);
    /// A key other than a modifier was let go, or the window lost the keyboard.
    void keyUp();
    void clear();
    /// Takes what a user has who never chose anything.
    void useDefault();
    /// Takes the combination that the last alert was about.
    void forceUse();

private:
    static bool isForSystem(const Shortcut& shortcut);
    bool isInMainMenu(const Shortcut& shortcut) const;
    void judge(const Shortcut& shortcut);
    void alert(const ShortcutAlert& alert);
    void accept(const Shortcut& shortcut);
    void changed();

    Services services_;
    Name name_;
    std::vector<MenuItem> mainMenu_;
    bool isRecording_ = false;
    bool isKeyDown_ = false;
    /// Outlasts the recording until the keys are let go, lest the keys just recorded count as pressed.
    std::optional<Platform::Subscription> pause_;
    /// Counts the questions to the system, so that an answer that is out of date is told.
    std::uint64_t question_ = 0;
    std::optional<Shortcut> refused_;
    Platform::Subscription nameChanges_;
    Platform::Lifetime lifetime_;
};

} // namespace KeyboardShortcuts
