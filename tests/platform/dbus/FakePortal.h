#pragma once

#include "tests/platform/dbus/BusObject.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <optional>
#include <utility>
#include <vector>

namespace TestSupport {

/// A desktop portal that writes down what it is asked and answers when the test says so.
class FakePortal : public BusObject {
public:
    enum class Mood {
        asksTheUser,
        refuses,
        saysNothing,
        /// Does not even tell its version.
        hangs,
    };

    explicit FakePortal(QDBusConnection bus)
        : BusObject(std::move(bus), QStringLiteral("org.freedesktop.portal.Desktop"),
                    QStringLiteral("/org/freedesktop/portal/desktop"), QDBusConnection::SubPath) {}

    Mood mood = Mood::asksTheUser;
    /// Of its dialogs for files, the only interface whose version it tells; absent where it has none.
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
    void answer(unsigned response, const QVariantMap& results = {}) { respond({response, results}); }
    /// Any answer, such as no portal should give.
    void respond(const QVariantList& arguments) {
        auto signal = QDBusMessage::createTargetedSignal(questions.back().service(), request(),
                                                         QStringLiteral("org.freedesktop.portal.Request"),
                                                         QStringLiteral("Response"));
        signal.setArguments(arguments);
        bus().send(signal);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) override {
        if (message.interface() == QStringLiteral("org.freedesktop.DBus.Properties")) {
            if (mood != Mood::hangs) {
                bus().send(replyAboutVersion(message));
            }
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
        case Mood::hangs:
            break;
        }
        return true;
    }

private:
    QDBusMessage replyAboutVersion(const QDBusMessage& question) const {
        const bool isKnown =
            version && question.member() == QStringLiteral("Get") &&
            question.arguments() ==
                QVariantList{QStringLiteral("org.freedesktop.portal.FileChooser"), QStringLiteral("version")};
        return isKnown ? question.createReply(QVariant::fromValue(QDBusVariant(*version)))
                       : question.createErrorReply(QDBusError::UnknownInterface,
                                                   QStringLiteral("there is no such interface"));
    }
};

} // namespace TestSupport
