#pragma once

#include "tests/support/BusObject.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QStringList>
#include <QVariantMap>

#include <optional>
#include <utility>
#include <vector>

namespace TestSupport {

/// A desktop portal that writes down what it is asked and answers when the test says so.
class FakePortal : public BusObject {
public:
    enum class Mood { asksTheUser, refuses, saysNothing };

    explicit FakePortal(QDBusConnection bus)
        : BusObject(std::move(bus), QStringLiteral("org.freedesktop.portal.Desktop"),
                    QStringLiteral("/org/freedesktop/portal/desktop"), QDBusConnection::SubPath) {}

    Mood mood = Mood::asksTheUser;
    /// Of every interface that is asked for; absent where the portal has none of them.
    std::optional<uint> version = 3;
    std::vector<QDBusMessage> questions;
    /// The paths of requests that whoever made them has closed.
    QStringList withdrawn;

    /// Where the last question is answered.
    QString request() const {
        return path() + QStringLiteral("/request/") +
               questions.back().service().mid(1).replace(QLatin1Char('.'), QLatin1Char('_')) +
               QLatin1Char('/') + options().value(QStringLiteral("handle_token")).toString();
    }
    /// Those of the last question.
    QVariantMap options() const { return qdbus_cast<QVariantMap>(questions.back().arguments().back()); }

    /// What the user says to the last question: 0 for yes, 1 for no, 2 for the dialog closed.
    void answer(unsigned response, const QVariantMap& results = {}) {
        auto signal = QDBusMessage::createTargetedSignal(questions.back().service(), request(),
                                                         QStringLiteral("org.freedesktop.portal.Request"),
                                                         QStringLiteral("Response"));
        signal << response << results;
        bus().send(signal);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
        if (message.interface() == QStringLiteral("org.freedesktop.DBus.Properties")) {
            bus().send(version ? message.createReply(QVariant::fromValue(QDBusVariant(*version)))
                               : message.createErrorReply(QDBusError::UnknownInterface,
                                                          QStringLiteral("there is no such interface")));
            return true;
        }
        if (message.interface() == QStringLiteral("org.freedesktop.portal.Request")) {
            withdrawn << message.path();
            return true;
        }
        questions.push_back(message);
        if (message.interface() == QStringLiteral("org.freedesktop.portal.Device")) {
            // As portals answer programs inside a sandbox, which all that ask here say to be.
            bus().send(
                message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotAllowed"),
                                         QStringLiteral("This call is not available inside the sandbox")));
            return true;
        }
        switch (mood) {
        case Mood::asksTheUser:
            bus().send(message.createReply(QVariant::fromValue(QDBusObjectPath(path()))));
            break;
        case Mood::refuses:
            bus().send(message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotAllowed"),
                                                QStringLiteral("not in here")));
            break;
        case Mood::saysNothing:
            break;
        }
        return true;
    }
};

} // namespace TestSupport
