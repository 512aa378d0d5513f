#include "platform/linux/dbus/PortalRequest.h"

#include <QDBusArgument>
#include <QUuid>

#include <utility>

namespace LinuxPlatform {
namespace {

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

PortalRequest::Outcome outcomeOf(unsigned response) {
    constexpr unsigned yes = 0;
    constexpr unsigned no = 1;
    switch (response) {
    case yes:
        return PortalRequest::Outcome::yes;
    case no:
        return PortalRequest::Outcome::no;
    default:
        return PortalRequest::Outcome::noAnswer;
    }
}

/// Where the portal will answer, so that one can listen before asking.
QString requestPath(const QDBusConnection& bus, const QString& token) {
    auto sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return portalPath + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
}

} // namespace

PortalRequest::PortalRequest(const QDBusConnection& bus, Platform::MainQueue& queue, Question question,
                             Answered answered)
    : PortalRequest(bus, queue, std::move(question),
                    QStringLiteral("curtain_") + QUuid::createUuid().toString(QUuid::Id128),
                    std::move(answered)) {}

PortalRequest::PortalRequest(const QDBusConnection& bus, Platform::MainQueue& queue, Question question,
                             const QString& token, Answered answered)
    : bus_(bus),
      path_(requestPath(bus, token)),
      answered_(std::move(answered)),
      response_(bus, portal, path_, requestInterface, QStringLiteral("Response"),
                [this](const QDBusMessage& response) { receive(response); }),
      departure_(portal, bus, QDBusServiceWatcher::WatchForUnregistration) {
    if (!bus.isConnected()) {
        // Such a call would never come to an end.
        QMetaObject::invokeMethod(
            &context_, [this] { answer(Outcome::notAsked); }, Qt::QueuedConnection);
        return;
    }
    auto call = QDBusMessage::createMethodCall(portal, portalPath, question.interface, question.method);
    question.options.insert(QStringLiteral("handle_token"), token);
    call.setArguments(question.arguments);
    call << question.options;
    call_.emplace(bus, queue, call, patience,
                  [this](const std::optional<QDBusMessage>& reply) { receiveReply(reply); });
}

void PortalRequest::receiveReply(const std::optional<QDBusMessage>& reply) {
    if (!reply || reply->type() == QDBusMessage::ErrorMessage) {
        answer(reply ? Outcome::notAsked : Outcome::silent);
        return;
    }
    QObject::connect(&departure_, &QDBusServiceWatcher::serviceUnregistered, &context_,
                     [this] { answer(Outcome::departed); });
}

void PortalRequest::withdraw() {
    answered_ = nullptr;
    auto close = QDBusMessage::createMethodCall(portal, path_, requestInterface, QStringLiteral("Close"));
    // A portal that is started for this has nothing to close.
    close.setAutoStartService(false);
    bus_.send(close);
}

void PortalRequest::receive(const QDBusMessage& response) {
    if (response.signature() != QLatin1String("ua{sv}")) {
        answer(Outcome::noAnswer);
        return;
    }
    const auto outcome = outcomeOf(response.arguments().at(0).toUInt());
    answer(outcome,
           outcome == Outcome::yes ? qdbus_cast<QVariantMap>(response.arguments().at(1)) : QVariantMap());
}

void PortalRequest::answer(Outcome outcome, const QVariantMap& results) {
    if (const auto answered = std::exchange(answered_, nullptr)) {
        answered(outcome, results);
    }
}

} // namespace LinuxPlatform
