#include "platform/linux/media/LinuxMediaAuthorization.h"

#include "tests/platform/dbus/FakePortal.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"

#include <QDBusMessage>

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace {

using namespace std::chrono_literals;
using LinuxPlatform::LinuxMediaAuthorization;
using Platform::AuthorizationStatus;
using Platform::MediaType;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::FakePortal;
using TestSupport::spinUntil;

constexpr auto patience = std::chrono::seconds(30);

struct MediaAuthorizationTest : testing::Test {
    TestSupport::PrivateBus bus;
    QDBusConnection ours = bus.connect(QStringLiteral("ours"));
    std::unique_ptr<FakePortal> portal =
        std::make_unique<FakePortal>(bus.connect(QStringLiteral("the portal's")));
    TestSupport::HandDrivenQueue queue;
    LinuxMediaAuthorization authorization{ours, queue, true};
    std::vector<bool> answers;

    void TearDown() override {
        portal.reset();
        for (const auto* name : {"ours", "the portal's"}) {
            QDBusConnection::disconnectFromBus(QLatin1String(name));
        }
    }

    AuthorizationStatus status() { return authorization.status(MediaType::video); }

    void request() {
        authorization.requestAccess(MediaType::video,
                                    [this](bool isGranted) { answers.push_back(isGranted); });
    }
    bool isAsked(std::size_t times = 1) {
        return spinUntil([&] { return portal->questions.size() == times; }, patience);
    }
    bool isAnswered(std::size_t times = 1) {
        return spinUntil([&] { return answers.size() == times; }, patience);
    }
};

TEST_F(MediaAuthorizationTest, OutsideASandboxNobodyIsAsked) {
    LinuxMediaAuthorization outside(ours, queue, false);
    for (const auto type : {MediaType::audio, MediaType::video}) {
        EXPECT_EQ(outside.status(type), AuthorizationStatus::authorized);
        std::optional<bool> answer;
        outside.requestAccess(type, [&](bool isGranted) { answer = isGranted; });
        EXPECT_EQ(answer, true);
    }
    EXPECT_THAT(portal->questions, IsEmpty());
}

TEST_F(MediaAuthorizationTest, TheStatusIsKnownWithoutAsking) {
    EXPECT_EQ(status(), AuthorizationStatus::notDetermined);
    EXPECT_THAT(portal->questions, IsEmpty());
}

TEST_F(MediaAuthorizationTest, ThePortalIsAskedForThisDevice) {
    request();
    ASSERT_TRUE(isAsked());
    const auto& question = portal->questions.front();
    EXPECT_EQ(question.interface(), QStringLiteral("org.freedesktop.portal.Camera"));
    EXPECT_EQ(question.member(), QStringLiteral("AccessCamera"));
    EXPECT_EQ(question.signature(), QStringLiteral("a{sv}"));
    EXPECT_EQ(status(), AuthorizationStatus::notDetermined);
}

TEST_F(MediaAuthorizationTest, AYesIsRemembered) {
    request();
    ASSERT_TRUE(isAsked());
    portal->answer(0);
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(status(), AuthorizationStatus::authorized);
    request();
    EXPECT_THAT(answers, ElementsAre(true, true));
    EXPECT_THAT(portal->questions, SizeIs(1));
}

TEST_F(MediaAuthorizationTest, ANoIsRemembered) {
    request();
    ASSERT_TRUE(isAsked());
    portal->answer(1);
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(status(), AuthorizationStatus::denied);
    request();
    EXPECT_THAT(answers, ElementsAre(false, false));
    EXPECT_THAT(portal->questions, SizeIs(1));
}

TEST_F(MediaAuthorizationTest, ADialogThatWasClosedMayBeShownAgain) {
    request();
    ASSERT_TRUE(isAsked());
    portal->answer(2);
    ASSERT_TRUE(isAnswered());
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_EQ(status(), AuthorizationStatus::notDetermined);
    request();
    ASSERT_TRUE(isAsked(2));
    portal->answer(0);
    ASSERT_TRUE(isAnswered(2));
    EXPECT_THAT(answers, ElementsAre(false, true));
}

TEST_F(MediaAuthorizationTest, AnAnswerThatCannotBeReadIsNoYes) {
    std::size_t times = 0;
    for (const auto& unreadable :
         {QVariantList{}, QVariantList{0U}, QVariantList{QStringLiteral("0"), QVariantMap{}}}) {
        request();
        ASSERT_TRUE(isAsked(++times));
        portal->respond(unreadable);
        ASSERT_TRUE(isAnswered(times));
        EXPECT_FALSE(answers.back());
        EXPECT_EQ(status(), AuthorizationStatus::notDetermined);
    }
}

TEST_F(MediaAuthorizationTest, TheUserIsAskedOnceHoweverManyWantToKnow) {
    request();
    request();
    ASSERT_TRUE(isAsked());
    request();
    portal->answer(0);
    ASSERT_TRUE(isAnswered(3));
    EXPECT_THAT(answers, ElementsAre(true, true, true));
    EXPECT_THAT(portal->questions, SizeIs(1));
}

TEST_F(MediaAuthorizationTest, NobodyIsAskedAboutTheMicrophoneInsideASandbox) {
    EXPECT_EQ(authorization.status(MediaType::audio), AuthorizationStatus::authorized);
    std::optional<bool> answer;
    authorization.requestAccess(MediaType::audio, [&](bool isGranted) { answer = isGranted; });
    EXPECT_EQ(answer, true);
    request();
    ASSERT_TRUE(isAsked());
    portal->answer(1);
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(authorization.status(MediaType::audio), AuthorizationStatus::authorized);
    EXPECT_THAT(portal->questions, SizeIs(1)) << "about the camera";
}

TEST_F(MediaAuthorizationTest, WhereThePortalRefusesToAskTheSandboxItselfDecides) {
    portal->mood = FakePortal::Mood::refuses;
    request();
    ASSERT_TRUE(isAnswered());
    EXPECT_THAT(answers, ElementsAre(true));
    EXPECT_EQ(status(), AuthorizationStatus::authorized);
}

TEST_F(MediaAuthorizationTest, WithoutAPortalTheSandboxItselfDecides) {
    portal.reset();
    request();
    ASSERT_TRUE(isAnswered());
    EXPECT_THAT(answers, ElementsAre(true));
}

TEST_F(MediaAuthorizationTest, WithoutABusTheSandboxItselfDecides) {
    LinuxMediaAuthorization alone(QDBusConnection(QStringLiteral("none")), queue, true);
    std::optional<bool> answer;
    alone.requestAccess(MediaType::video, [&](bool isGranted) { answer = isGranted; });
    EXPECT_TRUE(spinUntil([&] { return answer.has_value(); }, patience));
    EXPECT_EQ(answer, true);
}

TEST_F(MediaAuthorizationTest, APortalThatSaysNothingIsNotWaitedForLong) {
    portal->mood = FakePortal::Mood::saysNothing;
    request();
    ASSERT_TRUE(isAsked());
    queue.advance(LinuxPlatform::PortalRequest::patience - 1ms);
    EXPECT_THAT(answers, IsEmpty());
    queue.advance(1ms);
    EXPECT_THAT(answers, ElementsAre(true));
}

TEST_F(MediaAuthorizationTest, APortalThatDiesWithItsDialogOpenHasNotBeenAnswered) {
    request();
    ASSERT_TRUE(isAsked());
    portal.reset();
    ASSERT_TRUE(isAnswered());
    EXPECT_THAT(answers, ElementsAre(false));
    EXPECT_EQ(status(), AuthorizationStatus::notDetermined);
}

TEST_F(MediaAuthorizationTest, AnAnswerAfterTheEndHarmsNobody) {
    auto shortLived = std::make_unique<LinuxMediaAuthorization>(ours, queue, true);
    shortLived->requestAccess(MediaType::video, [this](bool isGranted) { answers.push_back(isGranted); });
    ASSERT_TRUE(isAsked());
    shortLived.reset();
    portal->answer(0);
    request();
    ASSERT_TRUE(isAsked(2));
    EXPECT_THAT(answers, IsEmpty());
}

} // namespace
