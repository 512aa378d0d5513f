#include "platform/linux/departures/SessionLock.h"

#include "platform/linux/dbus/LoginManagerNames.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QVariantMap>

#include <optional>
#include <utility>

namespace LinuxPlatform {
namespace {

bool isTrue(const QDBusMessage& answer) {
    auto value = answer.arguments().value(0);
    if (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return answer.type() == QDBusMessage::ReplyMessage && value.metaType() == QMetaType::fromType<bool>() &&
           value.toBool();
}

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
        ask(sessionBus, saver,
            QDBusMessage::createMethodCall(saver,
                                           QStringLiteral("/org/%1/ScreenSaver").arg(QLatin1String(desktop)),
                                           saver, QStringLiteral("GetActive")));
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
    auto question = QDBusMessage::createMethodCall(
        loginService, session, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << loginSessionInterface << QStringLiteral("LockedHint");
    ask(systemBus, loginSessionInterface, std::move(question));
}

/// Whether it had locked the session before anybody listened.
void SessionLock::ask(const QDBusConnection& bus, const QString& locker, QDBusMessage question) {
    question.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), &context_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_, [this, watcher, locker] {
        watcher->deleteLater();
        if (isTrue(watcher->reply())) {
            hear(locker, true);
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
