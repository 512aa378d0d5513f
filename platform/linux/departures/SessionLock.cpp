#include "platform/linux/departures/SessionLock.h"

#include "platform/linux/dbus/LoginManagerNames.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>

#include <optional>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Empty where the change is not about that.
std::optional<bool> saysLocked(const QDBusMessage& change) {
    if (change.arguments().value(0).toString() != loginSessionInterface) {
        return std::nullopt;
    }
    const auto hint =
        qdbus_cast<QVariantMap>(change.arguments().value(1)).value(QStringLiteral("LockedHint"));
    return hint.isValid() ? std::optional(hint.toBool()) : std::nullopt;
}

} // namespace

SessionLock::SessionLock(const QDBusConnection& sessionBus, std::function<void(bool isLocked)> didChange)
    : didChange_(std::move(didChange)) {
    for (const auto* const desktop : {"freedesktop", "gnome", "cinnamon", "mate", "xfce"}) {
        const auto saver = QStringLiteral("org.%1.ScreenSaver").arg(QLatin1String(desktop));
        // The paths differ.
        signals_.emplace_back(
            sessionBus, saver, QString(), saver, QStringLiteral("ActiveChanged"),
            [this, saver](const QDBusMessage& change) { hear(saver, change.arguments().value(0).toBool()); });
    }
}

void SessionLock::hearLoginManager(const QDBusConnection& systemBus) {
    auto question = QDBusMessage::createMethodCall(loginService, loginManagerPath, loginManagerInterface,
                                                   QStringLiteral("GetSession"));
    // The caller's own, or where it belongs to none, as what the user's service manager starts does, the one
    // on the user's screen.
    question << QStringLiteral("auto");
    question.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(systemBus.asyncCall(question), &context_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_, [this, watcher, systemBus] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusObjectPath> session = *watcher;
        if (!session.isError()) {
            hearLoginSession(systemBus, session.value().path());
        }
    });
}

void SessionLock::hearLoginSession(const QDBusConnection& systemBus, const QString& session) {
    signals_.emplace_back(systemBus, loginService, session, loginSessionInterface, QStringLiteral("Lock"),
                          [this](const QDBusMessage& /*signal*/) { didChange_(true); });
    // A request as well. A locker that tells of itself ends the lock when it follows.
    signals_.emplace_back(systemBus, loginService, session, loginSessionInterface, QStringLiteral("Unlock"),
                          [this](const QDBusMessage& /*signal*/) { hear(loginSessionInterface, false); });
    signals_.emplace_back(systemBus, loginService, session, QStringLiteral("org.freedesktop.DBus.Properties"),
                          QStringLiteral("PropertiesChanged"), [this](const QDBusMessage& change) {
                              if (const auto isLocked = saysLocked(change)) {
                                  hear(loginSessionInterface, *isLocked);
                              }
                          });
}

void SessionLock::hear(const QString& locker, bool isLocked) {
    if (isLocked) {
        lockers_.insert(locker);
    } else {
        lockers_.remove(locker);
    }
    if (isLocked || lockers_.isEmpty()) {
        didChange_(isLocked);
    }
}

} // namespace LinuxPlatform
