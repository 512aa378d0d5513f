#pragma once

#include "platform/linux/dbus/DBusSignal.h"
#include "platform/linux/donotdisturb/QuietRoad.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

#include <memory>
#include <vector>

namespace LinuxPlatform {

/// A switch that is read and turned by messages on the session bus; starts no service.
class BusQuietRoad : public QuietRoad {
public:
    explicit BusQuietRoad(QDBusConnection bus) : bus_(std::move(bus)) {}

    bool tellsChanges() const override { return !signals_.empty(); }
    void read(std::function<void(std::optional<std::string> state)> onState) override;
    void write(const std::string& state, std::function<void(std::optional<bool> isDone)> onDone) override;
    void beginWaiting() override { isWaiting_ = true; }

protected:
    virtual QDBusMessage question() const = 0;
    virtual std::optional<std::string> stateIn(const QDBusMessage& answer) = 0;
    virtual QDBusMessage order(const std::string& state) const = 0;
    /// The answer to an order that was followed.
    virtual void ordered(const QDBusMessage& /*answer*/) {}

    /// A signal after which the state may be another.
    void follow(const QString& sender, const QString& path, const QString& interface, const QString& name);

    void call(const QDBusMessage& message, std::function<void(const QDBusMessage& answer)> onAnswer);

private:
    QDBusConnection bus_;
    std::vector<std::unique_ptr<DBusSignal>> signals_;
    bool isWaiting_ = false;
    /// Holds the calls that are not answered yet.
    QObject calls_;
};

} // namespace LinuxPlatform
