#pragma once

#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <list>

namespace LinuxPlatform {

/// Hears that the session is being locked and that it is unlocked, from the desktop's screen saver and from
/// the login manager. Lockers that tell neither are not noticed. Main thread only; nothing here waits.
/// Source: org.freedesktop.ScreenSaver and the interfaces that desktops named after it (ActiveChanged), and
/// org.freedesktop.login1.Session (Lock, Unlock, LockedHint).
class SessionLock {
public:
    /// `didChange` is called once or more often for each lock, one from before included, and once no locker
    /// says that it still locks.
    SessionLock(const QDBusConnection& sessionBus, std::function<void(bool isLocked)> didChange);

    /// From when it has said which session this is.
    void hearLoginManager(const QDBusConnection& systemBus);

private:
    void hearLoginSession(const QDBusConnection& systemBus, const QString& session);

    void ask(const QDBusConnection& bus, const QString& locker, QDBusMessage question);
    void hear(const QString& locker, bool isLocked);

    std::function<void(bool isLocked)> didChange_;
    /// Interfaces of those that say that they lock the session.
    QSet<QString> lockers_;
    std::list<DBusSignal> signals_;
    /// Receives the login manager's answer.
    QObject context_;
};

} // namespace LinuxPlatform
