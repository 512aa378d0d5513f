#pragma once

#include "platform/linux/shortcutlists/Accelerator.h"

#include <QDBusConnection>
#include <QObject>

namespace LinuxPlatform {

/// The shortcuts of Xfce: of its commands and of its window manager, as its settings service keeps them.
class XfconfShortcuts : public ShortcutList {
public:
    explicit XfconfShortcuts(QDBusConnection bus);

    void ask(const WantedShortcut& wanted, Answer answer) override;

private:
    QDBusConnection bus_;
    QObject questions_;
};

} // namespace LinuxPlatform
