#pragma once

#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>
#include <list>

namespace LinuxPlatform {

/// Hears that the session is being locked, from the desktop's screen saver and from the login manager.
/// Lockers that tell neither are not noticed. Main thread only; nothing here waits. Source:
/// org.freedesktop.ScreenSaver and the interfaces that desktops named after it (ActiveChanged), and
/// org.freedesktop.login1.Session (Lock, LockedHint).
class SessionLock {
public:
    SessionLock(const QDBusConnection& sessionBus, std::function<void()> didLock);

    /// From when it has said which session this is.
    void hearLoginManager(const QDBusConnection& systemBus);

private:
    void hearLoginSession(const QDBusConnection& systemBus, const QString& session);

    std::function<void()> didLock_;
    std::list<DBusSignal> signals_;
    /// Receives the login manager's answer.
    QObject context_;
};

} // namespace LinuxPlatform
