#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QString>

#include <functional>
#include <memory>

namespace LinuxPlatform {

/// Follows who owns a name on a message bus. The bus itself says so: not every reply names its sender. Starts
/// no service and waits for nobody. On the thread that made it.
class BusNameOwner {
public:
    /// `onChange` is called once the owner is known, and at every change from then on, but not before the
    /// constructor has returned.
    BusNameOwner(const QDBusConnection& bus, const QString& name, std::function<void()> onChange);

    /// False until the bus has answered, and for ever where there is no bus.
    bool isKnown() const { return isKnown_; }
    /// The unique bus name; empty where nobody has the name.
    const QString& owner() const { return owner_; }

private:
    void settle(const QString& owner);

    std::function<void()> onChange_;
    QDBusServiceWatcher changes_;
    std::unique_ptr<QDBusPendingCallWatcher> answer_;
    bool isKnown_ = false;
    QString owner_;
};

} // namespace LinuxPlatform
