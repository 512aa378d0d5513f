#pragma once

#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QVariant>

#include <chrono>
#include <functional>
#include <optional>

namespace LinuxPlatform {

/// One question that the desktop portal puts to the user (org.freedesktop.portal.Request). Its end withdraws
/// nothing, but nobody is told any more. Main thread only; nothing here waits.
class PortalRequest {
public:
    /// How long the portal may take to say that it will ask. The user may take any time.
    static constexpr std::chrono::milliseconds patience{5000};

    /// The portal's response: 0 for yes, 1 for no, others for no answer; absent when the portal cannot be
    /// asked.
    using Answered = std::function<void(std::optional<unsigned> response)>;

    /// `arguments` are those of the method without the options, which come last. `answered` may end the
    /// request.
    PortalRequest(const QDBusConnection& bus, const QString& interface, const QString& method,
                  const QVariantList& arguments, Answered answered);

private:
    PortalRequest(const QDBusConnection& bus, const QString& interface, const QString& method,
                  const QVariantList& arguments, const QString& token, Answered answered);
    void answer(std::optional<unsigned> response);

    Answered answered_;
    DBusSignal response_;
    QDBusServiceWatcher departure_;
    /// Receives the method's reply.
    QObject context_;
};

} // namespace LinuxPlatform
