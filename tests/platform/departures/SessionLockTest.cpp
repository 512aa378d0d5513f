#include "platform/linux/departures/SessionLock.h"

#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/EventLoop.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QStringList>
#include <QVariantMap>

#include <chrono>

namespace {

using TestSupport::spinUntil;

const QString ownSession = QStringLiteral("/org/freedesktop/login1/session/_32");
const QString loginSession = QStringLiteral("org.freedesktop.login1.Session");

/// A login manager that says which session this is, unless it knows none.
class Sessions : public TestSupport::BusObject {
public:
    explicit Sessions(const QDBusConnection& bus)
        : BusObject(bus, QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                    QDBusConnection::SubPath) {}

    bool wasAsked = false;
    bool knowsSession = true;
    bool isLocked = false;

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        if (message.member() == QStringLiteral("Get")) {
            EXPECT_EQ(message.path(), ownSession);
            EXPECT_EQ(message.arguments(), (QVariantList{loginSession, QStringLiteral("LockedHint")}));
            return bus.send(message.createReply(QVariant::fromValue(QDBusVariant(isLocked))));
        }
        EXPECT_EQ(message.member(), QStringLiteral("GetSession"));
        EXPECT_EQ(message.arguments(), QVariantList{QStringLiteral("auto")});
        wasAsked = true;
        if (!knowsSession) {
            return bus.send(message.createErrorReply(QStringLiteral("org.freedesktop.login1.NoSessionForPID"),
                                                     QStringLiteral("None")));
        }
        return bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(ownSession))));
    }

    void send(const char* request, const QString& session) {
        bus().send(QDBusMessage::createSignal(session, loginSession, QLatin1String(request)));
    }
    void change(const char* property, bool value) {
        auto signal =
            QDBusMessage::createSignal(ownSession, QStringLiteral("org.freedesktop.DBus.Properties"),
                                       QStringLiteral("PropertiesChanged"));
        signal << loginSession << QVariantMap{{QLatin1String(property), value}} << QStringList();
        bus().send(signal);
    }
};

/// A screen saver that says whether it locks the session.
class ScreenSaver : public TestSupport::BusObject {
public:
    ScreenSaver(const QDBusConnection& bus, const char* desktop, bool isActive)
        : BusObject(bus, QStringLiteral("org.%1.ScreenSaver").arg(QLatin1String(desktop)),
                    QStringLiteral("/org/%1/ScreenSaver").arg(QLatin1String(desktop))),
          isActive_(isActive) {}

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
        return message.member() == QStringLiteral("GetActive") && bus.send(message.createReply(isActive_));
    }

private:
    bool isActive_;
};

struct SessionLockTest : testing::Test {
    TestSupport::PrivateBus bus;
    QDBusConnection desktop = bus.connect(QStringLiteral("desktop"));
    QDBusConnection client = bus.connect(QStringLiteral("client"));
    int locks = 0;
    int unlocks = 0;
    LinuxPlatform::SessionLock lock{client, [this](bool isLocked) { ++(isLocked ? locks : unlocks); }};

    SessionLockTest() { deliver(); }
    ~SessionLockTest() override {
        QDBusConnection::disconnectFromBus(QStringLiteral("desktop"));
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
    }

    /// What either has sent has arrived then: an answer of the bus comes after it.
    void deliver() {
        for (const auto& connection : {client, desktop, client}) {
            const auto answer = connection.call(QDBusMessage::createMethodCall(
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
            ASSERT_EQ(answer.type(), QDBusMessage::ReplyMessage);
            QCoreApplication::processEvents();
        }
    }

    void tell(const QString& saver, const QString& path, bool isActive) {
        auto signal = QDBusMessage::createSignal(path, saver, QStringLiteral("ActiveChanged"));
        signal << isActive;
        desktop.send(signal);
        deliver();
    }
};

TEST_F(SessionLockTest, HearsTheScreenSaverOfEveryDesktopWhereverItsObjectIs) {
    int expected = 0;
    for (const auto* const name : {"freedesktop", "gnome", "cinnamon", "mate", "xfce"}) {
        const auto saver = QStringLiteral("org.%1.ScreenSaver").arg(QLatin1String(name));
        desktop.registerService(saver);
        for (const auto& path : {QStringLiteral("/ScreenSaver"), QStringLiteral("/org/x/ScreenSaver")}) {
            tell(saver, path, true);
            EXPECT_EQ(locks, ++expected) << name << " at " << path.toStdString();
        }
    }
}

TEST_F(SessionLockTest, AnUnlockedSessionAndAnotherProgramsWordsAreNoNews) {
    const auto saver = QStringLiteral("org.mate.ScreenSaver");
    desktop.registerService(saver);
    tell(saver, QStringLiteral("/"), false);
    tell(QStringLiteral("org.gnome.ScreenSaver"), QStringLiteral("/"), true);
    EXPECT_EQ(locks, 0);
}

TEST_F(SessionLockTest, HearsTheLoginManagerOfItsOwnSession) {
    Sessions sessions(desktop);
    lock.hearLoginManager(client);
    ASSERT_TRUE(spinUntil([&] { return sessions.wasAsked; }));
    deliver();
    sessions.send("Lock", QStringLiteral("/org/freedesktop/login1/session/_33"));
    sessions.change("LockedHint", false);
    sessions.change("IdleHint", true);
    deliver();
    EXPECT_EQ(locks, 0);
    sessions.send("Lock", ownSession);
    deliver();
    EXPECT_EQ(locks, 1);
    sessions.change("LockedHint", true);
    deliver();
    EXPECT_EQ(locks, 2);
}

TEST_F(SessionLockTest, ALockFromBeforeIsNoticedAndItsEndToo) {
    for (const auto* const name : {"freedesktop", "gnome", "cinnamon", "mate", "xfce"}) {
        for (const bool isActive : {true, false}) {
            const ScreenSaver saver(desktop, name, isActive);
            int told = 0;
            const LinuxPlatform::SessionLock late(client, [&](bool isLocked) { told += isLocked ? 1 : 100; });
            // The question, and the answer.
            deliver();
            deliver();
            EXPECT_EQ(told, isActive ? 1 : 0) << name;
            tell(QStringLiteral("org.%1.ScreenSaver").arg(QLatin1String(name)), QStringLiteral("/"), false);
            EXPECT_EQ(told, isActive ? 101 : 100) << name;
        }
    }
}

TEST_F(SessionLockTest, TheLoginManagerIsAskedWhetherTheSessionIsLocked) {
    Sessions sessions(desktop);
    sessions.isLocked = true;
    lock.hearLoginManager(client);
    EXPECT_TRUE(spinUntil([&] { return locks == 1; }, std::chrono::seconds(30)));
    sessions.change("LockedHint", false);
    deliver();
    EXPECT_EQ(unlocks, 1);
}

TEST_F(SessionLockTest, IsUnlockedOnceNoLockerLocksIt) {
    const auto saver = QStringLiteral("org.cinnamon.ScreenSaver");
    desktop.registerService(saver);
    Sessions sessions(desktop);
    lock.hearLoginManager(client);
    ASSERT_TRUE(spinUntil([&] { return sessions.wasAsked; }));
    deliver();
    sessions.change("LockedHint", true);
    tell(saver, QStringLiteral("/"), true);
    tell(saver, QStringLiteral("/"), false);
    EXPECT_EQ(unlocks, 0) << "the login manager says that it is locked";
    sessions.change("IdleHint", false);
    sessions.send("Unlock", QStringLiteral("/org/freedesktop/login1/session/_33"));
    deliver();
    EXPECT_EQ(unlocks, 0);
    sessions.change("LockedHint", false);
    deliver();
    EXPECT_EQ(unlocks, 1);
}

TEST_F(SessionLockTest, ARequestToUnlockEndsALockThatNobodyElseTellsOf) {
    const auto saver = QStringLiteral("org.mate.ScreenSaver");
    desktop.registerService(saver);
    Sessions sessions(desktop);
    lock.hearLoginManager(client);
    ASSERT_TRUE(spinUntil([&] { return sessions.wasAsked; }));
    deliver();
    sessions.send("Lock", ownSession);
    sessions.send("Unlock", ownSession);
    deliver();
    EXPECT_EQ(unlocks, 1);
    tell(saver, QStringLiteral("/"), true);
    sessions.send("Unlock", ownSession);
    deliver();
    EXPECT_EQ(unlocks, 1) << "the screen saver has not followed yet";
    tell(saver, QStringLiteral("/"), false);
    EXPECT_EQ(unlocks, 2);
}

TEST_F(SessionLockTest, ALoginManagerThatKnowsNoSessionIsNotHeard) {
    Sessions sessions(desktop);
    sessions.knowsSession = false;
    lock.hearLoginManager(client);
    ASSERT_TRUE(spinUntil([&] { return sessions.wasAsked; }));
    deliver();
    sessions.send("Lock", ownSession);
    sessions.change("LockedHint", true);
    deliver();
    EXPECT_EQ(locks, 0);
}

TEST_F(SessionLockTest, WithoutASystemBusTheDesktopIsHeard) {
    lock.hearLoginManager(QDBusConnection(QStringLiteral("none")));
    const auto saver = QStringLiteral("org.mate.ScreenSaver");
    desktop.registerService(saver);
    tell(saver, QStringLiteral("/"), true);
    EXPECT_EQ(locks, 1);
}

} // namespace
