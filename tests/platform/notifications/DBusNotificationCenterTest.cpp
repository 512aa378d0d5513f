#include "platform/linux/notifications/DBusNotificationCenter.h"

#include "tests/platform/dbus/AnonymousBus.h"
#include "tests/platform/dbus/PrivateBus.h"
#include "tests/platform/notifications/FakeNotificationServer.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::DBusNotificationCenter;
using Platform::NotificationRequest;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeNotificationServer;
using TestSupport::spinUntil;
using Mood = FakeNotificationServer::Mood;

struct RecordingDelegate : Platform::UserNotificationCenterDelegate {
    struct Answer {
        std::string action;
        NotificationRequest request;
    };

    std::vector<Answer> answers;
    std::uint64_t options = Platform::NotificationOption::banner | Platform::NotificationOption::sound;
    bool completesLater = false;
    std::vector<std::function<void()>> completions;

    void didReceive(const Platform::NotificationResponse& response,
                    const std::function<void()>& completion) override {
        answers.push_back({response.actionIdentifier, response.request});
        if (completesLater) {
            completions.push_back(completion);
        } else {
            completion();
        }
    }

    void willPresent(const NotificationRequest&,
                     const std::function<void(std::uint64_t)>& completion) override {
        completion(options);
    }
};

class DBusNotificationCenterTest : public testing::Test {
protected:
    DBusNotificationCenterTest() {
        center_->setDelegate(&delegate_);
        center_->setNotificationCategories(
            {{"activated", {{"UNDO", "Undo"}}}, {"rehidden", {{"REVEAL", "Reveal"}}}});
    }

    ~DBusNotificationCenterTest() override {
        center_.reset();
        server_.reset();
        for (const auto& name : names_) {
            QDBusConnection::disconnectFromBus(name);
        }
    }

    QDBusConnection connect(const QString& name) {
        names_.push_back(name);
        return bus_.connect(name);
    }

    FakeNotificationServer& startServer(Mood mood = Mood::answers) {
        static int servers = 0;
        // Each has the name only once the one before has let go of it.
        server_.reset();
        server_ =
            std::make_unique<FakeNotificationServer>(connect(QStringLiteral("server-%1").arg(++servers)));
        server_->mood = mood;
        return *server_;
    }

    static NotificationRequest rehidden(const std::string& identifier, const std::string& body = "body") {
        return {identifier, {"title", body, "rehidden", {{"app", identifier}}}};
    }

    /// The summaries of what the server has been handed, once there are so many.
    std::vector<std::string> summaries(std::size_t count) {
        EXPECT_TRUE(spinUntil([&] { return server_->notices.size() >= count; }));
        std::vector<std::string> result;
        for (const auto& notice : server_->notices) {
            result.push_back(notice.summary.toStdString());
        }
        return result;
    }

    const FakeNotificationServer::Notice& post(const NotificationRequest& request) {
        const auto before = server_->notices.size();
        center_->add(request);
        static const FakeNotificationServer::Notice none;
        const bool isShown = spinUntil([&] { return server_->notices.size() > before; });
        EXPECT_TRUE(isShown) << request.identifier << " has not reached the server";
        return isShown ? server_->notices.back() : none;
    }

    /// Leaves them on their way to a server that does not answer yet.
    void addHeld(const std::vector<NotificationRequest>& requests) {
        server_->mood = Mood::holds;
        const auto before = server_->heldMessages();
        for (const auto& request : requests) {
            center_->add(request);
        }
        EXPECT_TRUE(spinUntil([&] { return server_->heldMessages() >= before + requests.size(); }));
    }

    /// Leaves a server that has not answered yet whether it shows it, having shown another.
    void removeOnItsWay(const std::string& identifier) {
        startServer();
        post(plain("first"));
        addHeld({plain(identifier)});
        center_->removeDeliveredNotifications({identifier});
    }

    /// What the delegate is told, once there is so much. A witness that is sent last shows that what came
    /// before it had no effect.
    std::vector<std::string> answers(std::size_t count) {
        EXPECT_TRUE(spinUntil([&] { return delegate_.answers.size() >= count; }));
        std::vector<std::string> result;
        for (const auto& answer : delegate_.answers) {
            result.push_back(answer.action + " " + answer.request.identifier);
        }
        return result;
    }

    static NotificationRequest plain(const std::string& identifier) {
        return {identifier, {identifier, "body", {}, {}}};
    }

    TestSupport::PrivateBus bus_;
    std::vector<QString> names_;
    TestSupport::HandDrivenQueue queue_;
    RecordingDelegate delegate_;
    std::unique_ptr<DBusNotificationCenter> center_ = std::make_unique<DBusNotificationCenter>(
        connect(QStringLiteral("center")), queue_, "Curtain", "com.curtain.Curtain");
    std::unique_ptr<FakeNotificationServer> server_;
};

constexpr auto defaultAnswer = "com.apple.UNNotificationDefaultActionIdentifier";

TEST_F(DBusNotificationCenterTest, ShowsWhoTalksWhatAndWithWhichButtons) {
    startServer();
    const auto& notice = post(rehidden("mail"));
    EXPECT_EQ(notice.application, "Curtain");
    EXPECT_EQ(notice.replaces, 0U);
    EXPECT_EQ(notice.icon, "com.curtain.Curtain");
    EXPECT_EQ(notice.summary, "title");
    EXPECT_EQ(notice.body, "body");
    EXPECT_EQ(notice.actions, QStringList({"default", "", "REVEAL", "Reveal"}));
    EXPECT_EQ(notice.hints.value("desktop-entry"), "com.curtain.Curtain");
    EXPECT_EQ(notice.hints.value("urgency"), QVariant::fromValue<uchar>(1));
    EXPECT_FALSE(notice.hints.contains("sound-name"));
    EXPECT_FALSE(notice.hints.contains("suppress-sound"));
    EXPECT_EQ(notice.timeout, -1);
}

TEST_F(DBusNotificationCenterTest, ButtonsAreThoseOfTheMoment) {
    startServer();
    center_->setNotificationCategories({{"rehidden", {{"REVEAL", "Mostrar"}, {"MORE", "Más"}}}});
    EXPECT_EQ(post(rehidden("mail")).actions,
              QStringList({"default", "", "REVEAL", "Mostrar", "MORE", "Más"}));
    center_->setNotificationCategories({});
    EXPECT_EQ(post(rehidden("news")).actions, QStringList({"default", ""}));
}

TEST_F(DBusNotificationCenterTest, ServerWithoutActionsIsOfferedNone) {
    startServer().capabilities = {"body"};
    EXPECT_THAT(post(rehidden("mail")).actions, IsEmpty());
}

TEST_F(DBusNotificationCenterTest, BodyIsEscapedOnlyWhereItIsParsed) {
    const std::string body = R"(<b>R&D</b> "Post" 'ü' 中 )";
    startServer();
    EXPECT_EQ(post(rehidden("mail", body)).body.toStdString(),
              R"(&lt;b&gt;R&amp;D&lt;/b&gt; "Post" 'ü' 中 )");
    startServer().capabilities = {"actions", "body"};
    EXPECT_EQ(post(rehidden("mail", body)).body.toStdString(), body);
}

TEST_F(DBusNotificationCenterTest, SoundIsTheDelegatesWish) {
    startServer().capabilities << "sound";
    EXPECT_EQ(post(plain("loud")).hints.value("sound-name"), "message-new-instant");
    delegate_.options = Platform::NotificationOption::banner;
    const auto& notice = post(plain("quiet"));
    EXPECT_FALSE(notice.hints.contains("sound-name"));
    EXPECT_EQ(notice.hints.value("suppress-sound"), true);
}

TEST_F(DBusNotificationCenterTest, WithoutABannerNothingIsShown) {
    startServer();
    delegate_.options = Platform::NotificationOption::sound;
    center_->add(plain("unseen"));
    delegate_.options = Platform::NotificationOption::banner;
    center_->add(plain("seen"));
    EXPECT_THAT(summaries(1), ElementsAre("seen"));
}

TEST_F(DBusNotificationCenterTest, WithoutADelegateEverythingIsShown) {
    center_->setDelegate(nullptr);
    startServer();
    post(rehidden("mail"));
    server_->invoke(1, "REVEAL");
    EXPECT_TRUE(spinUntil([&] { return !server_->closed.empty(); }));
}

TEST_F(DBusNotificationCenterTest, SameIdentifierTakesItsPlace) {
    startServer().nextId = 7;
    EXPECT_EQ(post(rehidden("mail")).replaces, 0U);
    EXPECT_EQ(post(rehidden("news")).replaces, 0U);
    EXPECT_EQ(post(rehidden("mail")).replaces, 7U);
    EXPECT_EQ(post(rehidden("news")).replaces, 8U);
}

TEST_F(DBusNotificationCenterTest, ReplacementWaitsForTheNumberOfTheFirst) {
    startServer();
    post(plain("first"));
    addHeld({rehidden("mail", "one")});
    center_->add(rehidden("mail", "two"));
    center_->add(rehidden("mail", "three"));
    server_->nextId = 20;
    server_->answerHeld();
    EXPECT_TRUE(spinUntil([&] { return server_->notices.size() == 3; }));
    EXPECT_EQ(server_->notices[1].body, "one");
    EXPECT_EQ(server_->notices[2].body, "three");
    EXPECT_EQ(server_->notices[2].replaces, 20U);
}

TEST_F(DBusNotificationCenterTest, ClosedOneIsNotReplaced) {
    startServer();
    post(rehidden("mail"));
    post(rehidden("news"));
    server_->close(1);
    server_->invoke(2, "REVEAL");
    answers(1);
    EXPECT_EQ(post(rehidden("mail")).replaces, 0U);
}

TEST_F(DBusNotificationCenterTest, ButtonsAndClicksReachTheDelegate) {
    startServer();
    post(rehidden("mail"));
    post(plain("prompt"));
    post({"uuid", {"on", "body", "activated", {}}});
    server_->invoke(1, "REVEAL");
    server_->invoke(2, "default");
    server_->invoke(3, "UNDO");
    EXPECT_THAT(answers(3), ElementsAre("REVEAL mail", std::string(defaultAnswer) + " prompt", "UNDO uuid"));
    EXPECT_EQ(delegate_.answers[0].request, rehidden("mail"));
}

TEST_F(DBusNotificationCenterTest, AnsweredOneIsTakenAwayOnceTheDelegateIsDone) {
    startServer();
    delegate_.completesLater = true;
    post(rehidden("mail"));
    post(rehidden("news"));
    server_->invoke(1, "REVEAL");
    server_->invoke(2, "REVEAL");
    answers(2);
    EXPECT_THAT(server_->closed, IsEmpty());
    delegate_.completions.at(1)();
    EXPECT_TRUE(spinUntil([&] { return !server_->closed.empty(); }));
    EXPECT_THAT(server_->closed, ElementsAre(2));
}

TEST_F(DBusNotificationCenterTest, WhatIsSaidOfANoticeBeforeItsNumberIsKnownCounts) {
    startServer();
    post(plain("first"));
    server_->mood = Mood::holds;
    server_->nextId = 20;
    center_->add(rehidden("mail"));
    center_->add(rehidden("news"));
    EXPECT_TRUE(spinUntil([&] { return server_->heldMessages() >= 2; }));
    server_->close(21);
    server_->invoke(20, "REVEAL");
    server_->invoke(22, "REVEAL");
    server_->answerHeld();
    EXPECT_THAT(answers(1), ElementsAre("REVEAL mail"));
    EXPECT_EQ(post(rehidden("news")).replaces, 0U);
    server_->invoke(1, "default");
    EXPECT_THAT(answers(2), ElementsAre("REVEAL mail", std::string(defaultAnswer) + " first"))
        << "and nothing of a number that was nobody's then";
}

TEST_F(DBusNotificationCenterTest, OneAnswerCountsOnce) {
    startServer();
    post(rehidden("mail"));
    post(rehidden("news"));
    server_->invoke(1, "REVEAL");
    server_->invoke(1, "REVEAL");
    server_->invoke(1, "default");
    server_->close(1);
    server_->invoke(2, "REVEAL");
    EXPECT_THAT(answers(2), ElementsAre("REVEAL mail", "REVEAL news"));
}

TEST_F(DBusNotificationCenterTest, AnswersToOthersAndNonsenseAreNotOurs) {
    startServer();
    post(rehidden("mail"));
    for (const std::uint32_t id : {0U, 2U, 0xFFFFFFFFU}) {
        server_->invoke(id, "REVEAL");
        server_->close(id);
    }
    server_->invoke(1, "UNDO");
    server_->invoke(1, "");
    server_->signal("ActionInvoked", {});
    server_->signal("ActionInvoked", {1U});
    server_->signal("ActionInvoked", {QStringLiteral("1"), QStringLiteral("REVEAL")});
    server_->signal("NotificationClosed", {QStringLiteral("1")});
    server_->signal("NotificationClosed", {});
    server_->invoke(1, "REVEAL");
    EXPECT_THAT(answers(1), ElementsAre("REVEAL mail"));
}

TEST_F(DBusNotificationCenterTest, SignalsOfAnybodyElseAreNotTheServers) {
    startServer();
    post(rehidden("mail"));
    auto impostor = connect(QStringLiteral("impostor"));
    auto message = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                              QStringLiteral("org.freedesktop.Notifications"),
                                              QStringLiteral("ActionInvoked"));
    message.setArguments({1U, QStringLiteral("default")});
    impostor.send(message);
    // The bus has passed the signal on by the time that it answers this.
    impostor.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    server_->invoke(1, "REVEAL");
    EXPECT_THAT(answers(1), ElementsAre("REVEAL mail"));
}

TEST_F(DBusNotificationCenterTest, ServerThatAppearsLateIsHandedWhatWaits) {
    center_->add(plain("one"));
    center_->add(rehidden("mail", "old"));
    center_->add(plain("two"));
    center_->add(rehidden("mail", "new"));
    queue_.advance(59.0);
    startServer();
    EXPECT_THAT(summaries(3), ElementsAre("one", "two", "title"));
    EXPECT_EQ(server_->notices[2].body, "new");
}

TEST_F(DBusNotificationCenterTest, TellsWhenAllIsDelivered) {
    startServer();
    post(plain("zero"));
    int told = 0;
    center_->whenDelivered([&] { ++told; });
    EXPECT_TRUE(spinUntil([&] { return told == 1; })) << "there is nothing more on its way";
    addHeld({plain("one"), plain("two")});
    center_->whenDelivered([&] { ++told; });
    EXPECT_EQ(told, 1);
    server_->answerHeld();
    EXPECT_THAT(summaries(3), ElementsAre("zero", "one", "two"));
    EXPECT_TRUE(spinUntil([&] { return told == 2; }));
}

TEST_F(DBusNotificationCenterTest, WhatWaitsForAServerIsNotDelivered) {
    center_->add(plain("one"));
    int told = 0;
    center_->whenDelivered([&] { ++told; });
    queue_.advance(10.0);
    EXPECT_EQ(told, 0);
    startServer();
    EXPECT_TRUE(spinUntil([&] { return told == 1; }));
    EXPECT_THAT(summaries(1), ElementsAre("one"));
}

TEST_F(DBusNotificationCenterTest, WhatIsTooOldIsNotShownAnyMore) {
    center_->add(plain("old"));
    queue_.advance(30.0);
    center_->add(plain("new"));
    queue_.advance(31.0);
    startServer();
    EXPECT_THAT(summaries(1), ElementsAre("new"));
}

TEST_F(DBusNotificationCenterTest, SlowServerHoldsNobodyUp) {
    startServer(Mood::holds);
    center_->add(plain("one"));
    EXPECT_TRUE(spinUntil([&] { return server_->heldMessages() >= 1; }));
    center_->add(plain("two"));
    queue_.advance(10.0);
    server_->answerHeld();
    EXPECT_THAT(summaries(2), ElementsAre("one", "two"));
    addHeld({plain("three"), plain("four")});
    queue_.advance(10.0);
    server_->answerHeld();
    EXPECT_THAT(summaries(4), ElementsAre("one", "two", "three", "four"));
    server_->invoke(4, "default");
    EXPECT_THAT(answers(1), ElementsAre(std::string(defaultAnswer) + " four"));
}

TEST_F(DBusNotificationCenterTest, ServerThatEndsTakesItsNoticesAlong) {
    startServer().nextId = 5;
    post(rehidden("mail"));
    startServer().nextId = 5;
    EXPECT_EQ(post(rehidden("news")).replaces, 0U);
    EXPECT_EQ(post(rehidden("mail")).replaces, 0U);
    EXPECT_EQ(server_->notices.size(), 2U) << "what was shown before is not shown again";
    server_->invoke(5, "REVEAL");
    EXPECT_THAT(answers(1), ElementsAre("REVEAL news"));
}

TEST_F(DBusNotificationCenterTest, WhatAServerNeverAnsweredGoesToTheNext) {
    startServer();
    post(plain("one"));
    addHeld({plain("two"), plain("three")});
    startServer();
    EXPECT_THAT(summaries(2), ElementsAre("two", "three"));
}

TEST_F(DBusNotificationCenterTest, AskedServerThatEndsIsForgotten) {
    startServer(Mood::holds);
    center_->add(plain("one"));
    EXPECT_TRUE(spinUntil([&] { return server_->heldMessages() >= 1; }));
    startServer();
    EXPECT_THAT(summaries(1), ElementsAre("one"));
}

TEST_F(DBusNotificationCenterTest, NoticeAtWhichServersEndIsGivenUp) {
    center_->add(plain("deadly"));
    for (int servers = 0; servers < 3; ++servers) {
        startServer(Mood::holds);
        EXPECT_TRUE(spinUntil([&] { return server_->heldMessages() >= 1; }));
    }
    startServer();
    center_->add(plain("harmless"));
    EXPECT_THAT(summaries(1), ElementsAre("harmless"));
}

TEST_F(DBusNotificationCenterTest, ErrorsAreTheEndOfThatNoticeOnly) {
    startServer(Mood::refuses);
    center_->add(rehidden("mail"));
    EXPECT_TRUE(spinUntil([&] { return server_->notifications == 1; }));
    server_->mood = Mood::answers;
    const auto& notice = post(rehidden("mail"));
    EXPECT_EQ(notice.replaces, 0U);
    EXPECT_THAT(notice.actions, Not(IsEmpty())) << "it was asked again what it can do";
}

TEST_F(DBusNotificationCenterTest, ErrorThatABusGivesForAServerThatIsGoneIsNotTheEnd) {
    startServer(Mood::seemsGone);
    center_->add(plain("one"));
    EXPECT_TRUE(spinUntil([&] { return server_->notifications == 1; }));
    startServer();
    EXPECT_THAT(summaries(1), ElementsAre("one"));
}

TEST_F(DBusNotificationCenterTest, NumbersThatAreNoneAreIgnored) {
    startServer(Mood::talksNonsense);
    center_->add(rehidden("mail"));
    EXPECT_TRUE(spinUntil([&] { return server_->notifications == 1; }));
    server_->mood = Mood::answers;
    EXPECT_EQ(post(rehidden("mail")).replaces, 0U);
}

TEST_F(DBusNotificationCenterTest, NumberThatIsGivenTwiceBelongsToTheLastOne) {
    startServer().nextId = 9;
    post(rehidden("mail"));
    server_->nextId = 9;
    post(rehidden("news"));
    server_->invoke(9, "REVEAL");
    EXPECT_THAT(answers(1), ElementsAre("REVEAL news"));
    EXPECT_EQ(post(rehidden("mail")).replaces, 0U);
}

TEST_F(DBusNotificationCenterTest, DelegateMayPostAgainFromInsideAnAnswer) {
    struct Poster : RecordingDelegate {
        DBusNotificationCenter* center = nullptr;

        void didReceive(const Platform::NotificationResponse& response,
                        const std::function<void()>& completion) override {
            center->add(response.request);
            RecordingDelegate::didReceive(response, completion);
        }
    } poster;
    poster.center = center_.get();
    startServer();
    center_->setDelegate(&poster);
    post(rehidden("mail"));
    server_->invoke(1, "REVEAL");
    EXPECT_TRUE(spinUntil([&] { return server_->notices.size() == 2; }));
    EXPECT_EQ(server_->notices[1].replaces, 0U);
}

TEST_F(DBusNotificationCenterTest, GoneItHearsNothing) {
    startServer();
    delegate_.completesLater = true;
    post(rehidden("mail"));
    post(rehidden("news"));
    server_->invoke(1, "REVEAL");
    answers(1);
    addHeld({plain("unanswered")});
    center_.reset();
    delegate_.completions.at(0)();
    server_->invoke(2, "REVEAL");
    server_->answerHeld();
    EXPECT_EQ(delegate_.answers.size(), 1U);
}

TEST_F(DBusNotificationCenterTest, RemovedOneIsTakenOffTheScreen) {
    startServer();
    post(rehidden("mail"));
    post(rehidden("news"));
    center_->removeDeliveredNotifications({"mail", "unknown"});
    EXPECT_TRUE(spinUntil([&] { return !server_->closed.empty(); }));
    EXPECT_THAT(server_->closed, ElementsAre(1U));
    EXPECT_EQ(post(rehidden("mail")).replaces, 0U);
    server_->invoke(1, "REVEAL");
    server_->invoke(2, "REVEAL");
    EXPECT_THAT(answers(1), ElementsAre("REVEAL news"));
}

TEST_F(DBusNotificationCenterTest, RemovedOneThatWaitsIsNeverShown) {
    center_->add(plain("early"));
    center_->add(plain("late"));
    center_->removeDeliveredNotifications({"early"});
    startServer();
    EXPECT_THAT(summaries(1), ElementsAre("late"));
}

TEST_F(DBusNotificationCenterTest, OneThatIsRemovedOnItsWayGoesAsSoonAsItHasANumber) {
    removeOnItsWay("second");
    server_->answerHeld();
    EXPECT_TRUE(spinUntil([&] { return !server_->closed.empty(); }));
    EXPECT_THAT(server_->closed, ElementsAre(2U));
    EXPECT_EQ(post(plain("second")).replaces, 0U);
}

TEST_F(DBusNotificationCenterTest, OneThatIsRemovedOnItsWayToAServerThatEndsDoesNotGoToTheNext) {
    removeOnItsWay("second");
    startServer();
    center_->add(plain("third"));
    EXPECT_THAT(summaries(1), ElementsAre("third"));
}

TEST_F(DBusNotificationCenterTest, NobodyIsAskedForPermission) {
    std::optional<bool> isGranted;
    center_->requestAuthorization(6, [&](bool answer) { isGranted = answer; });
    EXPECT_EQ(isGranted, true);
}

/// On a bus on which no reply names its sender.
class AnonymousBusTest : public DBusNotificationCenterTest {
protected:
    AnonymousBusTest() {
        names_.push_back(QStringLiteral("anonymous"));
        center_ = std::make_unique<DBusNotificationCenter>(anonymous_.connect(names_.back()), queue_,
                                                           "Curtain", "com.curtain.Curtain");
        center_->setDelegate(&delegate_);
        center_->setNotificationCategories({{"rehidden", {{"REVEAL", "Reveal"}}}});
    }

private:
    TestSupport::AnonymousBus anonymous_{bus_};
};

TEST_F(AnonymousBusTest, NoticesAreShownAnsweredAndTakenAway) {
    startServer();
    EXPECT_EQ(post(rehidden("mail")).replaces, 0U);
    EXPECT_EQ(post(rehidden("mail")).replaces, 1U);
    server_->invoke(1, "REVEAL");
    EXPECT_THAT(answers(1), ElementsAre("REVEAL mail"));
    EXPECT_TRUE(spinUntil([&] { return !server_->closed.empty(); }));
    EXPECT_THAT(server_->closed, ElementsAre(1));
}

TEST_F(AnonymousBusTest, ServerThatStartsAgainGoesOn) {
    center_->add(plain("early"));
    startServer(Mood::holds);
    EXPECT_TRUE(spinUntil([&] { return server_->heldMessages() >= 1; }));
    startServer();
    EXPECT_THAT(summaries(1), ElementsAre("early"));
    post(plain("late"));
    startServer();
    EXPECT_EQ(post(plain("late")).replaces, 0U);
}

TEST_F(AnonymousBusTest, ErrorsAreTheEndOfThatNoticeOnly) {
    startServer(Mood::refuses);
    center_->add(rehidden("mail"));
    EXPECT_TRUE(spinUntil([&] { return server_->notifications == 1; }));
    server_->mood = Mood::answers;
    EXPECT_THAT(post(rehidden("news")).summary, "title");
    EXPECT_EQ(server_->notices.size(), 1U);
}

TEST(DBusNotificationCenterWithoutABusTest, DoesNothing) {
    TestSupport::HandDrivenQueue queue;
    DBusNotificationCenter center(QDBusConnection(QStringLiteral("there is none")), queue, "Curtain",
                                  "com.curtain.Curtain");
    center.add({"one", {"title", "body", {}, {}}});
    queue.advance(120.0);
    center.add({"two", {"title", "body", {}, {}}});
}

} // namespace
