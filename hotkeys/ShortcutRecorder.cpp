#include "hotkeys/ShortcutRecorder.h"

#include "hotkeys/ShortcutTexts.h"

#include <algorithm>
#include <array>
#include <utility>

namespace KeyboardShortcuts {
namespace {

/// Caps Lock and the flag of the numeric keypad do not count.
constexpr std::uint64_t modifierMask = 0xFFDE0000;
/// The same without Shift and the function flag.
constexpr std::uint64_t modifierMaskBesidesShift = 0xFF5C0000;

constexpr std::array<std::string_view, 12> consoleKeys{"F1", "F2", "F3", "F4",  "F5",  "F6",
                                                       "F7", "F8", "F9", "F10", "F11", "F12"};

bool isAscii(char character) {
    return static_cast<unsigned char>(character) < 0x80;
}

bool isDeleteKey(std::int64_t keyCode) {
    return keyCode == KeyCode::deleteBackward || keyCode == KeyCode::forwardDelete;
}

} // namespace

ShortcutRecorder::ShortcutRecorder(const Services& services, Name name, std::vector<MenuItem> mainMenu)
    : services_(services),
      name_(std::move(name)),
      mainMenu_(std::move(mainMenu)),
      nameChanges_(
          services.shortcuts.observeShortcutByNameDidChange([this](const Notification& notification) {
              if (notification.userInfo.at(KeyboardShortcuts::nameKey) == name_) {
                  changed();
              }
          })) {}

std::string ShortcutRecorder::description() const {
    const auto shortcut = services_.shortcuts.getShortcut(name_);
    return shortcut ? shortcut->description(services_.keyboard) : std::string();
}

void ShortcutRecorder::begin() {
    if (isRecording_) {
        return;
    }
    isRecording_ = true;
    isKeyDown_ = false;
    refused_.reset();
    if (!pause_) {
        pause_ = services_.shortcuts.pause();
    }
    changed();
}

void ShortcutRecorder::end() {
    if (!isRecording_) {
        return;
    }
    isRecording_ = false;
    ++question_;
    if (!isKeyDown_) {
        pause_.reset();
    }
    changed();
}

bool ShortcutRecorder::keyDown(const KeyPress& press) {
    if (!isRecording_) {
        return false;
    }
    // Whatever was pressed before is given up.
    ++question_;
    isKeyDown_ = true;
    const auto key = press.keyCode;
    if ((press.modifierFlags & modifierMask) == 0) {
        if (key == KeyCode::tab) {
            return false;
        }
        if (key == KeyCode::escape) {
            end();
            return true;
        }
        if (key && isDeleteKey(*key)) {
            clear();
            end();
            return true;
        }
    }
    const bool hasModifiers = (press.modifierFlags & modifierMaskBesidesShift) != 0;
    if (!key || (!hasModifiers && !isFunctionKey(*key))) {
        services_.keyboard.beep();
        return true;
    }
    judge({*key, carbonModifiers(press.modifierFlags)});
    return true;
}

void ShortcutRecorder::keyUp() {
    isKeyDown_ = false;
    if (!isRecording_ && pause_) {
        pause_.reset();
        // Only now has the system been asked for the shortcut.
        changed();
    }
}

void ShortcutRecorder::useDefault() {
    services_.shortcuts.setShortcut(name_.defaultShortcut, name_);
}

void ShortcutRecorder::clear() {
    services_.shortcuts.setShortcut(std::nullopt, name_);
}

void ShortcutRecorder::forceUse() {
    if (const auto shortcut = std::exchange(refused_, std::nullopt)) {
        accept(*shortcut);
    }
}

bool ShortcutRecorder::isForSystem(const Shortcut& shortcut) {
    // The kernel and the display server act on these before any program sees them: they change the console or
    // end the session.
    constexpr auto controlAlt = CarbonModifier::control | CarbonModifier::option;
    const bool isWithControlAlt = (shortcut.carbonModifiers & controlAlt) == controlAlt;
    const auto* const console = std::ranges::find(consoleKeys, keyName(shortcut.carbonKeyCode));
    return isWithControlAlt && (console != consoleKeys.end() || isDeleteKey(shortcut.carbonKeyCode));
}

bool ShortcutRecorder::isInMainMenu(const Shortcut& shortcut) const {
    const auto label = services_.keyboard.keyLabel(shortcut.carbonKeyCode);
    // Keys of other scripts act in windows as those of a US keyboard.
    const bool isPlain = label && std::ranges::all_of(*label, isAscii);
    const auto key = isPlain ? *label : std::string(keyName(shortcut.carbonKeyCode).value_or(""));
    const auto flags = modifierFlags(shortcut.carbonModifiers);
    return std::ranges::any_of(mainMenu_, [&](const MenuItem& item) {
        return item.keyEquivalent == key && item.modifierFlags == flags;
    });
}

void ShortcutRecorder::judge(const Shortcut& shortcut) {
    if (isInMainMenu(shortcut)) {
        alert({shortcut, ShortcutTexts::usedByMenuItem, {}, false});
        return;
    }
    if (isForSystem(shortcut)) {
        alert({shortcut, ShortcutTexts::disallowed, {}, false});
        return;
    }
    services_.systemShortcuts.isTaken(
        {shortcut.carbonKeyCode, shortcut.carbonModifiers},
        lifetime_.weak([this, shortcut, question = question_](bool isTaken) {
            if (question != question_) {
                return;
            }
            if (isTaken) {
                alert({shortcut, ShortcutTexts::usedBySystem, ShortcutTexts::canBeChanged, true});
            } else {
                accept(shortcut);
            }
        }));
}

void ShortcutRecorder::alert(const ShortcutAlert& alert) {
    end();
    refused_ = alert.canForceUse ? std::optional(alert.shortcut) : std::nullopt;
    if (onAlert) {
        onAlert(alert);
    }
}

void ShortcutRecorder::accept(const Shortcut& shortcut) {
    services_.shortcuts.setShortcut(shortcut, name_);
    end();
}

void ShortcutRecorder::changed() {
    if (onChange) {
        onChange();
    }
}

} // namespace KeyboardShortcuts
