#include "platform/linux/dbus/PortalRequest.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QUuid>

#include <utility>

namespace LinuxPlatform {
namespace {

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

/// What the portal responds when its dialog ends in another way than by a yes or a no.
constexpr unsigned noAnswer = 2;

/// Where the portal will answer, so that one can listen before asking.
QString requestPath(const QDBusConnection& bus, const QString& token) {
    auto sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return portalPath + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
}

} // namespace

PortalRequest::PortalRequest(const QDBusConnection& bus, const QString& interface, const QString& method,
                             const QVariantList& arguments, Answered answered)
    : PortalRequest(bus, interface, method, arguments,
                    QStringLiteral("curtain_") + QUuid::createUuid().toString(QUuid::Id128),
                    std::move(answered)) {}

PortalRequest::PortalRequest(const QDBusConnection& bus, const QString& interface, const QString& method,
                             const QVariantList& arguments, const QString& token, Answered answered)
    : answered_(std::move(answered)),
      response_(bus, portal, requestPath(bus, token), QStringLiteral("org.freedesktop.portal.Request"),
                QStringLiteral("Response"),
                [this](const QDBusMessage& message) { answer(message.arguments().value(0).toUInt()); }),
      departure_(portal, bus, QDBusServiceWatcher::WatchForUnregistration) {
    if (!bus.isConnected()) {
        // Such a call would never come to an end.
        QMetaObject::invokeMethod(
            &context_, [this] { answer(std::nullopt); }, Qt::QueuedConnection);
        return;
    }
    auto call = QDBusMessage::createMethodCall(portal, portalPath, interface, method);
    call.setArguments(arguments);
    call << QVariantMap{{QStringLiteral("handle_token"), token}};
    auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, patience.count()), &context_);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &context_, [this, watcher] {
        watcher->deleteLater();
        if (watcher->isError()) {
            answer(std::nullopt);
            return;
        }
        // Its dialog goes with it.
        QObject::connect(&departure_, &QDBusServiceWatcher::serviceUnregistered, &context_,
                         [this] { answer(noAnswer); });
    });
}

void PortalRequest::answer(std::optional<unsigned> response) {
    if (const auto answered = std::exchange(answered_, nullptr)) {
        answered(response);
    }
}

} // namespace LinuxPlatform
