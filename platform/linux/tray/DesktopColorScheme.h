#pragma once

#include "platform/linux/dbus/DBusSignal.h"
#include "platform/linux/tray/TemplateTint.h"

#include <QDBusConnection>
#include <QVariant>

#include <functional>
#include <optional>

namespace LinuxPlatform {

/// The desktop's preference for light or dark, as its portal tells it. Waits for nobody: the answer, if there
/// is one, and its changes come from the event loop.
class DesktopColorScheme {
public:
    using Handler = std::function<void(std::optional<ColorScheme>)>;

    DesktopColorScheme(const QDBusConnection& bus, Handler onChange);

private:
    void report(QVariant value);

    Handler onChange_;
    DBusSignal changes_;
};

} // namespace LinuxPlatform
