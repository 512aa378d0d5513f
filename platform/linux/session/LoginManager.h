#pragma once

#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>

#include <functional>
#include <optional>

namespace LinuxPlatform {

/// What the system's login manager announces: the computer's sleep, and its end. The computer is kept from
/// either until the handlers have returned, which the manager allows for some seconds. Main thread only;
/// nothing here waits, and where there is no manager nothing is announced.
/// Source: https://systemd.io/INHIBITOR_LOCKS and the interface org.freedesktop.login1.Manager.
class LoginManager {
public:
    struct Handlers {
        std::function<void()> willSleep;
        std::function<void()> didWake;
        /// The computer is about to be turned off or restarted.
        std::function<void()> willEnd;
    };

    LoginManager(QDBusConnection systemBus, Handlers handlers);

    /// Waits for the bus to answer the first time, with a deadline. Not connected where there is none.
    static QDBusConnection systemBus();

private:
    void holdOff();
    void prepareForSleep(bool isBeginning);
    void prepareForShutdown(bool isBeginning);

    QDBusConnection bus_;
    Handlers handlers_;
    DBusSignal sleep_;
    DBusSignal shutdown_;
    bool isSuspended_ = false;
    /// While it is open, the computer waits.
    std::optional<QDBusUnixFileDescriptor> lock_;
    /// Receives the lock.
    QObject context_;
};

} // namespace LinuxPlatform
