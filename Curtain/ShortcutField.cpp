#include "Curtain/ShortcutField.h"

#include <QKeyEvent>
#include <QWindow>

#include <array>
#include <utility>

namespace Curtain {
namespace {

using KeyboardShortcuts::ModifierFlag::command;
using KeyboardShortcuts::ModifierFlag::control;
using KeyboardShortcuts::ModifierFlag::option;
using KeyboardShortcuts::ModifierFlag::shift;

constexpr std::uint64_t keypad = 0x200000;

std::uint64_t flagsOf(Qt::KeyboardModifiers modifiers) {
    constexpr std::array<std::pair<Qt::KeyboardModifier, std::uint64_t>, 5> names{{
        {Qt::ShiftModifier, shift},
        {Qt::ControlModifier, control},
        {Qt::AltModifier, option},
        {Qt::MetaModifier, command},
        {Qt::KeypadModifier, keypad},
    }};
    std::uint64_t flags = 0;
    for (const auto& [modifier, flag] : names) {
        flags |= modifiers.testFlag(modifier) ? flag : 0;
    }
    return flags;
}

/// Pressed on the way to a combination, and no key of one.
bool isModifier(int key) {
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
    case Qt::Key_Mode_switch:
    case Qt::Key_Multi_key:
        return true;
    default:
        return false;
    }
}

} // namespace

ShortcutField::ShortcutField(const KeyboardShortcuts::ShortcutRecorder::Services& services,
                             KeyboardShortcuts::Name name, std::vector<KeyboardShortcuts::MenuItem> mainMenu,
                             std::function<std::string()> lang, bool canTakeKeyboard)
    : keyboard_(services.keyboard),
      recorder_(services, std::move(name), std::move(mainMenu)),
      lang_(std::move(lang)),
      canTakeKeyboard_(canTakeKeyboard) {
    connect(this, &ShortcutField::alertChanged, this, &ShortcutField::dismissTextChanged);
    connect(this, &ShortcutField::langChanged, this, &ShortcutField::dismissTextChanged);
    recorder_.onChange = [this] {
        takeKeyboard(recorder_.isRecording());
        Q_EMIT changed();
    };
    recorder_.onAlert = [this](const auto& alert) {
        alert_ = alert;
        Q_EMIT alertChanged();
    };
}

ShortcutField::~ShortcutField() {
    takeKeyboard(false);
}

QString ShortcutField::combination() const {
    return QString::fromStdString(recorder_.description());
}

QString ShortcutField::alertCombination() const {
    return alert_ ? QString::fromStdString(alert_->shortcut.description(keyboard_)) : QString();
}

QString ShortcutField::alertMessage() const {
    return alert_ ? localized(alert_->message) : QString();
}

QString ShortcutField::alertExplanation() const {
    return alert_ ? localized(alert_->explanation) : QString();
}

QString ShortcutField::dismissText() const {
    using namespace KeyboardShortcuts;
    return localized(canForceUse() ? ShortcutTexts::chooseAnother : ShortcutTexts::ok);
}

void ShortcutField::begin(QObject* window) {
    if (window_ != window) {
        if (window_) {
            window_->removeEventFilter(this);
        }
        window_ = qobject_cast<QWindow*>(window);
        if (window_) {
            window_->installEventFilter(this);
        }
    }
    dismissAlert();
    recorder_.begin();
}

void ShortcutField::end() {
    recorder_.end();
}

void ShortcutField::forceUse() {
    recorder_.forceUse();
    dismissAlert();
}

void ShortcutField::dismissAlert() {
    if (alert_) {
        alert_.reset();
        Q_EMIT alertChanged();
    }
}

bool ShortcutField::eventFilter(QObject* /*watched*/, QEvent* event) {
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // What the window itself does with a key comes second.
        if (recorder_.isRecording()) {
            event->accept();
        }
        return false;
    case QEvent::KeyPress: {
        const auto& key = static_cast<QKeyEvent&>(*event);
        if (!recorder_.isRecording()) {
            return false;
        }
        return isModifier(key.key()) || key.isAutoRepeat() ||
               recorder_.keyDown({keyboard_.keyCode(key.nativeScanCode()), flagsOf(key.modifiers())});
    }
    case QEvent::KeyRelease: {
        const auto& key = static_cast<QKeyEvent&>(*event);
        if (!isModifier(key.key()) && !key.isAutoRepeat()) {
            recorder_.keyUp();
        }
        return false;
    }
    case QEvent::FocusOut:
    case QEvent::Hide:
        recorder_.keyUp();
        recorder_.end();
        return false;
    default:
        return false;
    }
}

QString ShortcutField::localized(std::string_view key) const {
    const auto found = KeyboardShortcuts::ShortcutTexts::string(key, lang_());
    return QString::fromUtf8(found.data(), static_cast<qsizetype>(found.size()));
}

void ShortcutField::takeKeyboard(bool take) {
    if (window_ && canTakeKeyboard_ && take != std::exchange(hasKeyboard_, take)) {
        window_->setKeyboardGrabEnabled(take);
    }
}

} // namespace Curtain
