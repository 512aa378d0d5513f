#include "platform/linux/camera/CameraPortal.h"

#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

#include <fcntl.h>

namespace LinuxPlatform {

int openPipeWireRemote(const QDBusConnection& sessionBus) {
    constexpr int patience = 1000;
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Camera"), QStringLiteral("OpenPipeWireRemote"));
    call << QVariantMap();
    const QDBusReply<QDBusUnixFileDescriptor> reply = sessionBus.call(call, QDBus::Block, patience);
    // The reply closes its own.
    return reply.isValid() && reply.value().isValid()
               ? fcntl(reply.value().fileDescriptor(), F_DUPFD_CLOEXEC, 0)
               : -1;
}

} // namespace LinuxPlatform
