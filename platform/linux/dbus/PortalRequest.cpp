#include "platform/linux/dbus/PortalRequest.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QUuid>

#include <utility>

namespace LinuxPlatform {
namespace {

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

constexpr unsigned yes = 0;
/// What the portal responds when its dialog ends in another way than by a yes or a no.
constexpr unsigned noAnswer = 2;

/// Where the portal will answer, so that one can listen before asking.
QString requestPath(const QDBusConnection& bus, const QString& token) {
    auto sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return portalPath + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
}

} // namespace

PortalRequest::PortalRequest(const QDBusConnection& bus, Question question, Answered answered)
    : PortalRequest(bus, std::move(question),
                    QStringLiteral("curtain_") + QUuid::createUuid().toString(QUuid::Id128),
                    std::move(answered)) {}

PortalRequest::PortalRequest(const QDBusConnection& bus, Question question, const QString& token,
                             Answered answered)
    : bus_(bus),
      path_(requestPath(bus, token)),
      answered_(std::move(answered)),
      response_(bus, portal, path_, requestInterface, QStringLiteral("Response"),
                [this](const QDBusMessage& message) {
                    const auto arguments = message.arguments();
                    const auto response = arguments.value(0).toUInt();
                    answer(response,
                           response == yes ? qdbus_cast<QVariantMap>(arguments.value(1)) : QVariantMap());
                }),
      departure_(portal, bus, QDBusServiceWatcher::WatchForUnregistration) {
    if (!bus.isConnected()) {
        // Such a call would never come to an end.
        QMetaObject::invokeMethod(
            &context_, [this] { answer(std::nullopt); }, Qt::QueuedConnection);
        return;
    }
    auto call = QDBusMessage::createMethodCall(portal, portalPath, question.interface, question.method);
    question.options.insert(QStringLiteral("handle_token"), token);
    call.setArguments(question.arguments);
    call << question.options;
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

void PortalRequest::withdraw() {
    answered_ = nullptr;
    bus_.send(QDBusMessage::createMethodCall(portal, path_, requestInterface, QStringLiteral("Close")));
}

void PortalRequest::answer(std::optional<unsigned> response, const QVariantMap& results) {
    if (const auto answered = std::exchange(answered_, nullptr)) {
        answered(response, results);
    }
}

} // namespace LinuxPlatform
