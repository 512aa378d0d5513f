#include "platform/linux/dbus/DBusSignal.h"

#include <utility>

namespace LinuxPlatform {

DBusSignal::DBusSignal(QDBusConnection bus, const QString& sender, const QString& path,
                       const QString& interface, const QString& name, Handler handler)
    : handler_(std::move(handler)) {
    bus.connect(sender, path, interface, name, this, SLOT(receive(QDBusMessage)));
}

void DBusSignal::receive(const QDBusMessage& message) {
    handler_(message);
}

} // namespace LinuxPlatform
