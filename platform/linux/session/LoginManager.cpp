#include "platform/linux/session/LoginManager.h"

#include "platform/linux/dbus/LoginManagerNames.h"
#include "platform/linux/session/SessionBusCheck.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QString>

#include <chrono>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::chrono::seconds systemBusPatience{1};

bool firstArgument(const QDBusMessage& message) {
    return message.arguments().value(0).toBool();
}

} // namespace

LoginManager::LoginManager(QDBusConnection systemBus, Handlers handlers)
    : bus_(std::move(systemBus)),
      handlers_(std::move(handlers)),
      sleep_(bus_, loginService, loginManagerPath, loginManagerInterface, QStringLiteral("PrepareForSleep"),
             [this](const QDBusMessage& message) { prepareForSleep(firstArgument(message)); }),
      shutdown_(bus_, loginService, loginManagerPath, loginManagerInterface,
                QStringLiteral("PrepareForShutdown"),
                [this](const QDBusMessage& message) { prepareForShutdown(firstArgument(message)); }) {
    holdOff();
}

QDBusConnection LoginManager::systemBus() {
    if (isBusSilent(systemBusAddress(), systemBusPatience)) {
        return QDBusConnection(QString());
    }
    return QDBusConnection::systemBus();
}

void LoginManager::holdOff() {
    auto call = QDBusMessage::createMethodCall(loginService, loginManagerPath, loginManagerInterface,
                                               QStringLiteral("Inhibit"));
    call << QStringLiteral("sleep:shutdown") << QStringLiteral("Curtain")
         << QStringLiteral("Lets go of the camera and the microphone") << QStringLiteral("delay");
    // A manager that does not run need not be started for this.
    call.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call), &context_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
        // The computer may have begun to fall asleep meanwhile.
        if (!reply.isError() && !isSuspended_) {
            lock_ = reply.value();
        }
    });
}

void LoginManager::prepareForSleep(bool isBeginning) {
    if (isBeginning == isSuspended_) {
        return;
    }
    isSuspended_ = isBeginning;
    if (isBeginning) {
        handlers_.willSleep();
        lock_.reset();
    } else {
        holdOff();
        handlers_.didWake();
    }
}

void LoginManager::prepareForShutdown(bool isBeginning) {
    if (isBeginning) {
        handlers_.willEnd();
    }
}

} // namespace LinuxPlatform
