#include "platform/linux/dbus/BusNameOwner.h"

#include <QDBusMessage>

#include <utility>

namespace LinuxPlatform {

BusNameOwner::BusNameOwner(const QDBusConnection& bus, const QString& name, std::function<void()> onChange)
    : onChange_(std::move(onChange)),
      changes_(name, bus, QDBusServiceWatcher::WatchForOwnerChange) {
    QObject::connect(&changes_, &QDBusServiceWatcher::serviceOwnerChanged, &changes_,
                     [this](const QString&, const QString&, const QString& newOwner) { settle(newOwner); });
    const auto driver = QStringLiteral("org.freedesktop.DBus");
    auto question = QDBusMessage::createMethodCall(driver, QStringLiteral("/org/freedesktop/DBus"), driver,
                                                   QStringLiteral("GetNameOwner"));
    question.setArguments({name});
    answer_ = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(question));
    QObject::connect(answer_.get(), &QDBusPendingCallWatcher::finished, &changes_, [this] {
        // That nobody has the name is an error, too. Any change is newer.
        if (!isKnown_) {
            settle(answer_->isError() ? QString() : answer_->reply().arguments().value(0).toString());
        }
    });
}

void BusNameOwner::settle(const QString& owner) {
    if (std::exchange(isKnown_, true) && owner == owner_) {
        return;
    }
    owner_ = owner;
    onChange_();
}

} // namespace LinuxPlatform
