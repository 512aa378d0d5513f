#pragma once

#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QString>
#include <QVariant>

#include <functional>

namespace LinuxPlatform {

/// One of the desktop's settings, as its portal tells it. Waits for nobody: the value, if there is one, and
/// its changes come from the event loop.
class PortalSetting {
public:
    /// Receives the bare value.
    using Handler = std::function<void(const QVariant&)>;

    PortalSetting(const QDBusConnection& bus, const QString& group, const QString& key, Handler onValue);

private:
    void report(QVariant value);

    Handler onValue_;
    DBusSignal changes_;
};

} // namespace LinuxPlatform
