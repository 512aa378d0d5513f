#pragma once

#include "hotkeys/ShortcutRecorder.h"
#include "hotkeys/ShortcutTexts.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>
#include <optional>
#include <string>

class QWindow;

namespace Curtain {

/// A field of a window that records a shortcut while it has the focus, for ShortcutRecorder.qml. Main thread
/// only.
class ShortcutField : public QObject {
    Q_OBJECT
    /// The combination, empty for none.
    Q_PROPERTY(QString combination READ combination NOTIFY changed)
    /// Whether it does nothing, for the system has refused it.
    Q_PROPERTY(bool isRefused READ isRefused NOTIFY changed)
    /// Whether it is what a user has who never chose anything.
    Q_PROPERTY(bool isDefault READ isDefault NOTIFY changed)
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY changed)
    Q_PROPERTY(bool hasAlert READ hasAlert NOTIFY alertChanged)
    /// What the alert is about: the refused combination, the message and the explanation, which may be empty.
    Q_PROPERTY(QString alertCombination READ alertCombination NOTIFY alertChanged)
    Q_PROPERTY(QString alertMessage READ alertMessage NOTIFY alertChanged)
    Q_PROPERTY(QString alertExplanation READ alertExplanation NOTIFY alertChanged)
    Q_PROPERTY(bool canForceUse READ canForceUse NOTIFY alertChanged)
    /// What the field says while it waits and while it records, and the words of its buttons.
    Q_PROPERTY(QString recordText READ recordText NOTIFY langChanged)
    Q_PROPERTY(QString pressText READ pressText NOTIFY langChanged)
    Q_PROPERTY(QString clearText READ clearText NOTIFY langChanged)
    Q_PROPERTY(QString forceUseText READ forceUseText NOTIFY langChanged)
    /// What closes the alert and leaves the shortcut as it was.
    Q_PROPERTY(QString dismissText READ dismissText NOTIFY dismissTextChanged)

public:
    /// What the services refer to outlives the field. `lang` answers with the code of the texts' language.
    ShortcutField(const KeyboardShortcuts::ShortcutRecorder::Services& services, KeyboardShortcuts::Name name,
                  std::vector<KeyboardShortcuts::MenuItem> mainMenu, std::function<std::string()> lang,
                  bool canTakeKeyboard);
    ~ShortcutField() override;

    QString combination() const;
    bool isRefused() const { return recorder_.isRefused(); }
    bool isDefault() const { return recorder_.isDefault(); }
    bool isRecording() const { return recorder_.isRecording(); }
    bool hasAlert() const { return alert_.has_value(); }
    QString alertCombination() const;
    QString alertMessage() const;
    QString alertExplanation() const;
    QString recordText() const { return localized(KeyboardShortcuts::ShortcutTexts::recordShortcut); }
    QString pressText() const { return localized(KeyboardShortcuts::ShortcutTexts::pressShortcut); }
    QString clearText() const { return localized(KeyboardShortcuts::ShortcutTexts::clearShortcut); }
    QString forceUseText() const { return localized(KeyboardShortcuts::ShortcutTexts::forceUse); }
    QString dismissText() const;
    bool canForceUse() const { return alert_ && alert_->canForceUse; }

    /// The field of this window got the focus. All keys go to it until the end, those that others have taken
    /// included.
    Q_INVOKABLE void begin(QObject* window);
    Q_INVOKABLE void end();
    Q_INVOKABLE void clear() { recorder_.clear(); }
    Q_INVOKABLE void useDefault() { recorder_.useDefault(); }
    Q_INVOKABLE void forceUse();
    Q_INVOKABLE void dismissAlert();

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void changed();
    void alertChanged();
    /// The texts are in another language now.
    void langChanged();
    void dismissTextChanged();

private:
    QString localized(std::string_view key) const;
    void takeKeyboard(bool take);

    Platform::Keyboard& keyboard_;
    KeyboardShortcuts::ShortcutRecorder recorder_;
    std::function<std::string()> lang_;
    bool canTakeKeyboard_;
    QPointer<QWindow> window_;
    bool hasKeyboard_ = false;
    std::optional<KeyboardShortcuts::ShortcutAlert> alert_;
};

} // namespace Curtain
