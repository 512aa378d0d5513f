#include "platform/linux/session/LoginManager.h"

#include "tests/platform/dbus/BusObject.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/EventLoop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>

#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

using LinuxPlatform::LoginManager;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::spinUntil;

/// A login manager that hands out locks and whose computer sleeps when the test says so.
class FakeLoginManager : public TestSupport::BusObject {
public:
    explicit FakeLoginManager(QDBusConnection bus)
        : BusObject(std::move(bus), QStringLiteral("org.freedesktop.login1"),
                    QStringLiteral("/org/freedesktop/login1")) {}
    ~FakeLoginManager() override {
        for (const int lock : locks_) {
            close(lock);
        }
    }

    bool refuses = false;
    bool delays = false;
    std::vector<QVariantList> requests;

    /// Locks that somebody still holds.
    std::size_t heldLocks() const {
        std::size_t held = 0;
        for (const int lock : locks_) {
            // The other end of a pipe is gone once every descriptor of it is closed.
            pollfd end{lock, POLLIN, 0};
            held += poll(&end, 1, 0) == 0 ? 1U : 0U;
        }
        return held;
    }

    void prepareFor(const char* what, bool isBeginning) {
        auto message = QDBusMessage::createSignal(path(), QStringLiteral("org.freedesktop.login1.Manager"),
                                                  QLatin1String("PrepareFor") + QLatin1String(what));
        message << isBeginning;
        bus().send(message);
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        if (message.member() != QLatin1String("Inhibit")) {
            return false;
        }
        requests.push_back(message.arguments());
        if (refuses) {
            bus().send(message.createErrorReply(QStringLiteral("org.freedesktop.login1.OperationInProgress"),
                                                QStringLiteral("not now")));
            return true;
        }
        if (delays) {
            delayed_ = message;
        } else {
            giveLock(message);
        }
        return true;
    }

    void answerDelayed() { giveLock(delayed_); }

private:
    void giveLock(const QDBusMessage& request) {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
        QDBusUnixFileDescriptor lock;
        lock.giveFileDescriptor(ends[1]);
        locks_.push_back(ends[0]);
        bus().send(request.createReply(QVariant::fromValue(lock)));
    }

    std::vector<int> locks_;
    QDBusMessage delayed_;
};

struct LoginManagerTest : testing::Test {
    TestSupport::PrivateBus bus;
    std::unique_ptr<FakeLoginManager> computer =
        std::make_unique<FakeLoginManager>(bus.connect(QStringLiteral("login-manager")));
    QDBusConnection connection = bus.connect(QStringLiteral("client"));
    std::vector<std::string> done;
    std::vector<std::size_t> locksHeldThen;

    ~LoginManagerTest() override {
        computer.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("login-manager"));
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));
    }

    LoginManager::Handlers handlers() {
        const auto note = [this](const char* what) {
            return [this, what] {
                done.emplace_back(what);
                locksHeldThen.push_back(computer->heldLocks());
            };
        };
        return {note("sleep"), note("wake"), note("end")};
    }
};

TEST_F(LoginManagerTest, HoldsSleepAndShutdownOff) {
    const LoginManager manager(connection, handlers());
    ASSERT_TRUE(spinUntil([&] { return computer->heldLocks() == 1; }));
    EXPECT_EQ(
        computer->requests.front(),
        QVariantList({QStringLiteral("sleep:shutdown"), QStringLiteral("Curtain"),
                      QStringLiteral("Lets go of the camera and the microphone"), QStringLiteral("delay")}));
    EXPECT_THAT(done, IsEmpty());
}

TEST_F(LoginManagerTest, LetsTheComputerSleepOnceTheHandlerHasReturned) {
    const LoginManager manager(connection, handlers());
    ASSERT_TRUE(spinUntil([&] { return computer->heldLocks() == 1; }));
    computer->prepareFor("Sleep", true);
    ASSERT_TRUE(spinUntil([&] { return computer->heldLocks() == 0; }));
    EXPECT_THAT(done, ElementsAre("sleep"));
    EXPECT_THAT(locksHeldThen, ElementsAre(1)) << "it is held while the handler is at work";

    computer->prepareFor("Sleep", false);
    ASSERT_TRUE(spinUntil([&] { return computer->heldLocks() == 1; })) << "held again for the next sleep";
    EXPECT_THAT(done, ElementsAre("sleep", "wake"));
    computer->prepareFor("Sleep", true);
    ASSERT_TRUE(spinUntil([&] { return computer->heldLocks() == 0; }));
    EXPECT_THAT(done, ElementsAre("sleep", "wake", "sleep"));
}

TEST_F(LoginManagerTest, ALockThatComesTooLateIsGivenBack) {
    computer->delays = true;
    const LoginManager manager(connection, handlers());
    ASSERT_TRUE(spinUntil([&] { return !computer->requests.empty(); }));
    computer->prepareFor("Sleep", true);
    ASSERT_TRUE(spinUntil([&] { return done.size() == 1; }));
    computer->answerDelayed();
    EXPECT_EQ(computer->heldLocks(), 1U);
    EXPECT_TRUE(spinUntil([&] { return computer->heldLocks() == 0; }));
}

TEST_F(LoginManagerTest, AsksAgainAfterARefusal) {
    computer->refuses = true;
    const LoginManager manager(connection, handlers());
    ASSERT_TRUE(spinUntil([&] { return !computer->requests.empty(); }));
    computer->refuses = false;
    computer->prepareFor("Sleep", true);
    ASSERT_TRUE(spinUntil([&] { return done.size() == 1; }));
    computer->prepareFor("Sleep", false);
    EXPECT_TRUE(spinUntil([&] { return computer->heldLocks() == 1; }));
    EXPECT_THAT(done, ElementsAre("sleep", "wake"));
}

TEST_F(LoginManagerTest, OneSleepCountsOnce) {
    const LoginManager manager(connection, handlers());
    computer->prepareFor("Sleep", false);
    computer->prepareFor("Sleep", true);
    computer->prepareFor("Sleep", true);
    computer->prepareFor("Sleep", false);
    computer->prepareFor("Sleep", false);
    computer->prepareFor("Shutdown", true);
    ASSERT_TRUE(spinUntil([&] { return done.size() == 3; }));
    EXPECT_THAT(done, ElementsAre("sleep", "wake", "end"));
}

TEST_F(LoginManagerTest, AShutdownThatWasCalledOffEndsNothing) {
    const LoginManager manager(connection, handlers());
    computer->prepareFor("Shutdown", false);
    computer->prepareFor("Sleep", true);
    ASSERT_TRUE(spinUntil([&] { return !done.empty(); }));
    EXPECT_THAT(done, ElementsAre("sleep"));
}

TEST_F(LoginManagerTest, OthersAreNotBelieved) {
    const LoginManager manager(connection, handlers());
    ASSERT_TRUE(spinUntil([&] { return computer->heldLocks() == 1; }));
    auto stranger = bus.connect(QStringLiteral("stranger"));
    auto message = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/login1"),
                                              QStringLiteral("org.freedesktop.login1.Manager"),
                                              QStringLiteral("PrepareForShutdown"));
    message << true;
    stranger.send(message);
    // What is sent later arrives later.
    stranger.call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                                                 QStringLiteral("org.freedesktop.DBus"),
                                                 QStringLiteral("GetId")));
    QDBusConnection::disconnectFromBus(QStringLiteral("stranger"));
    computer->prepareFor("Sleep", true);
    ASSERT_TRUE(spinUntil([&] { return !done.empty(); }));
    EXPECT_THAT(done, ElementsAre("sleep"));
}

TEST_F(LoginManagerTest, WithoutALoginManagerNothingIsAnnounced) {
    computer.reset();
    QDBusConnection::disconnectFromBus(QStringLiteral("login-manager"));
    const LoginManager manager(connection, handlers());
    const LoginManager withoutBus(QDBusConnection(QStringLiteral("none")), handlers());
    TestSupport::spinUntil([] { return false; }, std::chrono::milliseconds(50));
    EXPECT_THAT(done, IsEmpty());
}

} // namespace
