#include "platform/linux/session/ApplicationBus.h"

#include "tests/platform/dbus/BusQuestion.h"
#include "tests/support/EventLoop.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVirtualObject>
#include <QVariantMap>

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

using LinuxPlatform::ApplicationBus;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::spinUntil;

const auto name = QStringLiteral("com.curtain.Test");
constexpr std::chrono::seconds patience{30};

LinuxPlatform::NameOwner isThisSessions(std::uint32_t /*process*/) {
    return LinuxPlatform::NameOwner::thisSessions;
}

struct ApplicationBusTest : testing::Test {
    QDBusConnection ownConnection =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("own"));
    QDBusConnection caller =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("caller"));
    std::unique_ptr<ApplicationBus> bus =
        std::make_unique<ApplicationBus>(ownConnection, name, isThisSessions);
    std::vector<std::string> done;

    ~ApplicationBusTest() override {
        bus.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("own"));
        QDBusConnection::disconnectFromBus(QStringLiteral("caller"));
    }

    ApplicationBus::Actions actions() {
        return {[this] { done.emplace_back("open"); },
                {{"toggle-privacy", [this] { done.emplace_back("toggle-privacy"); }},
                 {"quit", [this] { done.emplace_back("quit"); }}}};
    }

    /// Calls the interface and waits for the answer.
    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        auto message = QDBusMessage::createMethodCall(name, QStringLiteral("/com/curtain/Test"),
                                                      QStringLiteral("org.freedesktop.Application"), method);
        message.setArguments(arguments);
        return TestSupport::askOverBus(caller, message);
    }

    QDBusMessage activateAction(const QString& action) {
        return call(QStringLiteral("ActivateAction"), {action, QVariantList(), QVariantMap()});
    }
};

TEST_F(ApplicationBusTest, TheFirstOneIsReachable) {
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    bus->setActions(actions());
    EXPECT_EQ(call(QStringLiteral("Activate"), {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(activateAction(QStringLiteral("toggle-privacy")).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call(QStringLiteral("Open"), {QStringList(), QVariantMap()}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_THAT(done, ElementsAre("open", "toggle-privacy", "open"));
}

TEST_F(ApplicationBusTest, CallsThatComeEarlyAreDoneLater) {
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    EXPECT_EQ(activateAction(QStringLiteral("toggle-privacy")).type(), QDBusMessage::ReplyMessage);
    EXPECT_THAT(done, IsEmpty());
    bus->setActions(actions());
    EXPECT_THAT(done, ElementsAre("toggle-privacy"));
}

TEST_F(ApplicationBusTest, EarlyCallsAreRefusedOnceThereAreMany) {
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    for (int call = 0; call < 16; ++call) {
        EXPECT_EQ(activateAction(QStringLiteral("toggle-privacy")).type(), QDBusMessage::ReplyMessage);
    }
    EXPECT_EQ(activateAction(QStringLiteral("toggle-privacy")).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded"));
    bus->setActions(actions());
    EXPECT_EQ(done.size(), 16U);
    EXPECT_EQ(activateAction(QStringLiteral("quit")).type(), QDBusMessage::ReplyMessage);
}

TEST_F(ApplicationBusTest, UnknownActionsAndMalformedCallsDoNothing) {
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    bus->setActions(actions());
    activateAction(QStringLiteral("format-disk"));
    EXPECT_EQ(call(QStringLiteral("Activate"), {42}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(QStringLiteral("ActivateAction"), {QStringLiteral("quit")}).type(),
              QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(QStringLiteral("Unknown"), {}).type(), QDBusMessage::ErrorMessage);
    EXPECT_THAT(done, IsEmpty());
}

TEST_F(ApplicationBusTest, TheSecondOneMakesTheFirstOneOpen) {
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    bus->setActions(actions());
    auto claim = ApplicationBus::Claim::noBus;
    bool isDone = false;
    std::thread second([&] {
        ApplicationBus other(caller, name, isThisSessions);
        claim = other.claim();
        isDone = true;
    });
    EXPECT_TRUE(spinUntil([&] { return !done.empty(); }));
    second.join();
    EXPECT_TRUE(isDone);
    EXPECT_EQ(claim, ApplicationBus::Claim::otherOpened);
    EXPECT_THAT(done, ElementsAre("open"));
}

/// Gives its name up before it answers, as one does that ends.
class EndingProgram : public QDBusVirtualObject {
public:
    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        auto bus = connection;
        bus.unregisterService(name);
        bus.send(message.createErrorReply(QDBusError::NoReply, QStringLiteral("it has ended")));
        return true;
    }
};

TEST_F(ApplicationBusTest, OneThatIsJustEndingIsReplaced) {
    const auto path = QStringLiteral("/com/curtain/Test");
    EndingProgram ending;
    ASSERT_TRUE(ownConnection.registerVirtualObject(path, &ending));
    ASSERT_TRUE(ownConnection.registerService(name));
    auto claim = ApplicationBus::Claim::noBus;
    std::atomic<bool> isDone = false;
    std::thread second([&] {
        ApplicationBus other(caller, name, isThisSessions);
        claim = other.claim();
        isDone = true;
    });
    EXPECT_TRUE(spinUntil([&] { return isDone.load(); }, std::chrono::seconds(20)));
    second.join();
    EXPECT_EQ(claim, ApplicationBus::Claim::first);
    ownConnection.unregisterObject(path);
}

TEST_F(ApplicationBusTest, AnotherProgramAndAnotherSessionAreTakenForWhatTheyAreAndNotAsked) {
    using LinuxPlatform::NameOwner;
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    bus->setActions(actions());
    std::vector<std::uint32_t> judged;
    for (const auto& [owner, expected] :
         {std::pair(NameOwner::stranger, ApplicationBus::Claim::stranger),
          std::pair(NameOwner::anotherSessions, ApplicationBus::Claim::otherSession)}) {
        ApplicationBus other(caller, name, [&, owner = owner](std::uint32_t process) {
            judged.push_back(process);
            return owner;
        });
        EXPECT_EQ(other.claim(), expected);
    }
    const auto self = static_cast<std::uint32_t>(getpid());
    EXPECT_THAT(judged, ElementsAre(self, self));
    // What was asked would have come before this.
    activateAction(QStringLiteral("quit"));
    EXPECT_THAT(done, ElementsAre("quit"));
}

TEST_F(ApplicationBusTest, OneBesideAnotherProgramHasTheNameOnceThatHasGone) {
    auto stranger = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("stranger"));
    ASSERT_TRUE(stranger.registerService(name));
    bus = std::make_unique<ApplicationBus>(ownConnection, name,
                                           [](auto) { return LinuxPlatform::NameOwner::stranger; });
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::stranger);
    bus->setActions(actions());
    QDBusConnection::disconnectFromBus(QStringLiteral("stranger"));
    stranger = QDBusConnection(QString());
    EXPECT_TRUE(
        spinUntil([&] { return activateAction(QStringLiteral("quit")).type() == QDBusMessage::ReplyMessage; },
                  patience));
    EXPECT_THAT(done, ElementsAre("quit"));
}

TEST_F(ApplicationBusTest, MoreCallsThanAPersonMakesAreRefusedForAWhile) {
    LinuxPlatform::CallRate::Clock::time_point now;
    bus = std::make_unique<ApplicationBus>(ownConnection, name, isThisSessions,
                                           LinuxPlatform::CallRate([&] { return now; }));
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    bus->setActions(actions());
    for (int call = 0; call < 30; ++call) {
        EXPECT_EQ(activateAction(QStringLiteral("quit")).type(), QDBusMessage::ReplyMessage) << call;
    }
    const auto isRefused = [&] {
        return activateAction(QStringLiteral("quit")).errorName() ==
               QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded");
    };
    EXPECT_TRUE(isRefused());
    now += std::chrono::milliseconds(150);
    EXPECT_FALSE(isRefused());
    EXPECT_TRUE(isRefused());
    EXPECT_EQ(done.size(), 31U);
    now += std::chrono::hours(1);
    for (int call = 0; call < 30; ++call) {
        EXPECT_FALSE(isRefused()) << call;
    }
    EXPECT_TRUE(isRefused());
}

TEST_F(ApplicationBusTest, TheNameIsFreeOnceTheFirstOneHasGone) {
    ASSERT_EQ(bus->claim(), ApplicationBus::Claim::first);
    bus.reset();
    ApplicationBus next(caller, name, isThisSessions);
    EXPECT_EQ(next.claim(), ApplicationBus::Claim::first);
}

TEST_F(ApplicationBusTest, WithoutABusThereIsNothingToAgreeOn) {
    ApplicationBus lonely(QDBusConnection(QStringLiteral("none")), name, isThisSessions);
    EXPECT_EQ(lonely.claim(), ApplicationBus::Claim::noBus);
}

} // namespace
