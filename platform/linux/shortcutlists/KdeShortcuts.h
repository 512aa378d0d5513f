#pragma once

#include "platform/linux/shortcutlists/Accelerator.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <optional>

namespace LinuxPlatform {

/// The shortcuts of the Plasma desktop, as its global accelerators' service knows them.
class KdeShortcuts : public ShortcutList {
public:
    /// Under which our own shortcuts stand there; they count as taken by nobody.
    static inline const QString ownComponent = QStringLiteral("curtain");

    explicit KdeShortcuts(QDBusConnection bus);

    void ask(const WantedShortcut& wanted, Answer answer) override;

    /// The combination in the numbers of Qt; absent for a key that Qt does not number.
    static std::optional<int> qtKey(std::int64_t modifiers, xkb_keysym_t symbol);

private:
    QDBusConnection bus_;
    QObject questions_;
};

} // namespace LinuxPlatform
