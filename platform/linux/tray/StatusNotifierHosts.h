#pragma once

#include "platform/linux/dbus/BusNameOwner.h"
#include "platform/linux/dbus/DBusSignal.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QString>

#include <functional>
#include <memory>

namespace LinuxPlatform {

/// Follows whether a panel on the session bus shows StatusNotifierItems. Waits for nobody: a watcher that
/// does not answer is one that is not known yet.
class StatusNotifierHosts {
public:
    /// `service` is the name of the watcher.
    StatusNotifierHosts(const QDBusConnection& bus, const QString& service, std::function<void()> onChange);

    /// False until the bus or the watcher has answered.
    bool isKnown() const { return isKnown_; }
    /// The unique bus name of the watcher that has a host; empty when there is none.
    const QString& watcher() const { return watcher_; }

private:
    void ownerChanged();
    void ask();
    void settle(const QString& watcher);

    QDBusConnection bus_;
    std::function<void()> onChange_;
    BusNameOwner owner_;
    DBusSignal hostCame_;
    DBusSignal hostLeft_;
    std::unique_ptr<QDBusPendingCallWatcher> answer_;
    bool isKnown_ = false;
    QString watcher_;
};

} // namespace LinuxPlatform
