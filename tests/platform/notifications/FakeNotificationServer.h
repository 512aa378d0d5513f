#pragma once

#include "tests/platform/dbus/BusObject.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace TestSupport {

/// A notification server whose user, moods and mistakes are the test's.
class FakeNotificationServer : public BusObject {
public:
    struct Notice {
        QString application;
        std::uint32_t replaces = 0;
        QString icon;
        QString summary;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int timeout = 0;
    };

    enum class Mood {
        answers,
        refuses,
        /// Answers as a bus does for one that has gone.
        seemsGone,
        /// Keeps what it is asked until `answerHeld`.
        holds,
        talksNonsense
    };

    explicit FakeNotificationServer(QDBusConnection bus)
        : BusObject(std::move(bus), QStringLiteral("org.freedesktop.Notifications"),
                    QStringLiteral("/org/freedesktop/Notifications")) {}

    QStringList capabilities{QStringLiteral("actions"), QStringLiteral("body"),
                             QStringLiteral("body-markup")};
    Mood mood = Mood::answers;
    /// Given to the next notification that replaces none; counts upwards.
    std::uint32_t nextId = 1;
    std::vector<Notice> notices;
    std::vector<std::uint32_t> closed;
    /// How often it was asked to show something, in whatever mood.
    int notifications = 0;

    void answerHeld() {
        mood = Mood::answers;
        for (const auto& message : std::exchange(held_, {})) {
            answer(message);
        }
    }

    std::size_t heldMessages() const { return held_.size(); }

    void signal(const char* name, const QVariantList& arguments) {
        auto message = QDBusMessage::createSignal(path(), service(), QString::fromLatin1(name));
        message.setArguments(arguments);
        bus().send(message);
    }

    void invoke(std::uint32_t id, const char* key) {
        signal("ActionInvoked", {id, QString::fromLatin1(key)});
    }

    void close(std::uint32_t id) { signal("NotificationClosed", {id, std::uint32_t{2}}); }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        notifications += message.member() == QLatin1String("Notify") ? 1 : 0;
        if (mood == Mood::holds) {
            message.setDelayedReply(true);
            held_.push_back(message);
        } else {
            answer(message);
        }
        return true;
    }

private:
    void answer(const QDBusMessage& message) {
        if (mood == Mood::refuses) {
            bus().send(message.createErrorReply(QDBusError::LimitsExceeded, QStringLiteral("no more")));
        } else if (mood == Mood::seemsGone) {
            bus().send(message.createErrorReply(QDBusError::NoReply, QStringLiteral("gone")));
        } else if (mood == Mood::talksNonsense) {
            bus().send(message.createReply(QVariantList{QStringLiteral("seven")}));
        } else if (message.member() == QLatin1String("GetCapabilities")) {
            bus().send(message.createReply(capabilities));
        } else if (message.member() == QLatin1String("Notify")) {
            bus().send(message.createReply(notify(message.arguments())));
        } else {
            closed.push_back(message.arguments().at(0).toUInt());
            bus().send(message.createReply());
        }
    }

    std::uint32_t notify(const QVariantList& arguments) {
        notices.push_back({arguments.at(0).toString(), arguments.at(1).toUInt(), arguments.at(2).toString(),
                           arguments.at(3).toString(), arguments.at(4).toString(),
                           arguments.at(5).toStringList(), qdbus_cast<QVariantMap>(arguments.at(6)),
                           arguments.at(7).toInt()});
        return notices.back().replaces != 0 ? notices.back().replaces : nextId++;
    }

    std::vector<QDBusMessage> held_;
};

} // namespace TestSupport
