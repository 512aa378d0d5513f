#include "Curtain/Notifier.h"

#include "Curtain/NotificationChecker.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/FakeUrlOpener.h"
#include "tests/support/FakeUserNotificationCenter.h"
#include "tests/support/FakeUuidSource.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using Platform::NotificationCategory;
using Platform::NotificationRequest;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto defaultAction = "com.apple.UNNotificationDefaultActionIdentifier";

struct NotifierTest : testing::Test {
    std::vector<std::string> events;
    TestSupport::FakeApplication application{events};
    TestSupport::FakeUserNotificationCenter center;
    TestSupport::FakeUuidSource uuids;
    TestSupport::HandDrivenQueue queue;
    std::unique_ptr<Curtain::Notifier> notifier;
    int undone = 0;
    std::vector<std::string> revealed;

    void SetUp() override { make(); }

    void make() {
        notifier = std::make_unique<Curtain::Notifier>(center, application, uuids, queue);
        notifier->onUndo = [this] { ++undone; };
        notifier->onReveal = [this](const std::string& bundleID) { revealed.push_back(bundleID); };
    }

    void makeWithoutBundle() {
        application.identifier.reset();
        make();
    }
};

TEST_F(NotifierTest, HasTheNamesThatTheSystemKnows) {
    EXPECT_STREQ(Curtain::Notifier::undoAction, "CURTAIN_UNDO");
    EXPECT_STREQ(Curtain::Notifier::revealAction, "CURTAIN_REVEAL");
    EXPECT_STREQ(Curtain::Notifier::activatedCategory, "CURTAIN_ACTIVATED");
    EXPECT_STREQ(Curtain::Notifier::rehiddenCategory, "CURTAIN_REHIDDEN");
    EXPECT_STREQ(Curtain::Notifier::bundleKey, "bundleID");
    EXPECT_STREQ(Platform::NotificationResponse::defaultActionIdentifier, defaultAction);
}

TEST_F(NotifierTest, IsEnabledInAnInstalledProgramOnly) {
    EXPECT_TRUE(notifier->enabled());
    makeWithoutBundle();
    EXPECT_FALSE(notifier->enabled());
    application.identifier = "com.curtain.Curtain";
    EXPECT_FALSE(notifier->enabled()) << "it is decided once";
}

TEST_F(NotifierTest, DoesNothingBeforeItIsAsked) {
    EXPECT_THAT(center.calls, IsEmpty());
    EXPECT_EQ(notifier->languageProvider(), "en");
}

TEST_F(NotifierTest, DisabledItDoesNothingAtAll) {
    makeWithoutBundle();
    notifier->becomeDelegate();
    notifier->notifyActivated();
    notifier->notifyRehidden("Mail", "mail");
    notifier->notifyPrompt();
    notifier->requestAuthorization([] { FAIL(); });
    queue.runReady();
    notifier.reset();
    EXPECT_THAT(center.calls, IsEmpty());
    EXPECT_EQ(uuids.last, 0);
}

TEST_F(NotifierTest, BecomingTheDelegateRegistersExactlyTwoCategories) {
    notifier->becomeDelegate();
    EXPECT_EQ(center.delegate, notifier.get());
    EXPECT_THAT(center.calls, ElementsAre("delegate", "categories"));
    EXPECT_THAT(center.categories,
                ElementsAre(NotificationCategory{"CURTAIN_ACTIVATED", {{"CURTAIN_UNDO", "Undo"}}},
                            NotificationCategory{"CURTAIN_REHIDDEN", {{"CURTAIN_REVEAL", "Reveal"}}}));
}

TEST_F(NotifierTest, GoneItIsNoDelegateAnyMore) {
    notifier->becomeDelegate();
    notifier.reset();
    EXPECT_EQ(center.delegate, nullptr);
}

TEST_F(NotifierTest, ActivationsStack) {
    notifier->notifyActivated();
    notifier->notifyActivated();
    EXPECT_THAT(center.calls, ElementsAre("categories", "add", "categories", "add"));
    EXPECT_THAT(
        center.delivered,
        ElementsAre(
            NotificationRequest{
                "uuid-1", {"Privacy mode on", "Detected possible screen sharing.", "CURTAIN_ACTIVATED", {}}},
            NotificationRequest{
                "uuid-2",
                {"Privacy mode on", "Detected possible screen sharing.", "CURTAIN_ACTIVATED", {}}}));
}

TEST_F(NotifierTest, NoticesOfPrivacyModeGoWithItAndOthersStay) {
    notifier->notifyActivated();
    notifier->notifyRehidden("Mail", "org.mail");
    notifier->notifyPrompt();
    notifier->notifySettingsLost({"preferences.bak"});
    notifier->withdrawPrivacyNotices();
    ASSERT_EQ(center.delivered.size(), 1U);
    EXPECT_THAT(center.delivered[0].content.body, testing::HasSubstr("preferences.bak"));
    center.calls.clear();
    notifier->withdrawPrivacyNotices();
    EXPECT_THAT(center.calls, IsEmpty()) << "there is nothing left to take back";
}

TEST_F(NotifierTest, NoticeOfAnAppThatIsShownGoesAlone) {
    notifier->notifyActivated();
    notifier->notifyRehidden("Mail", "org.mail");
    notifier->notifyRehidden("News", "org.news");
    notifier->withdrawRehidden("org.mail");
    ASSERT_EQ(center.delivered.size(), 2U);
    EXPECT_EQ(center.delivered[1].identifier, "rehidden.org.news");
    center.calls.clear();
    notifier->withdrawRehidden("org.mail");
    EXPECT_THAT(center.calls, IsEmpty());
}

TEST_F(NotifierTest, ANameFromOutsideIsOneShortLineThatTurnsNoText) {
    notifier->notifyRehidden("Ma\u202Eil\n\u2066\a<b>", "org.mail");
    notifier->notifyRehidden(std::string(100000, 'x'), "org.long");
    notifier->notifyRehidden("\u200F\u202E", "org.blank");
    ASSERT_EQ(center.delivered.size(), 3U);
    const std::string rest = " stays hidden because Curtain privacy mode is active.";
    EXPECT_EQ(center.delivered[0].content.body, "Mail <b>" + rest);
    EXPECT_EQ(center.delivered[1].content.body, std::string(200, 'x') + rest);
    EXPECT_EQ(center.delivered[2].content.body, "org.blank" + rest);
}

TEST_F(NotifierTest, SecondRehideOfAnAppReplacesTheFirst) {
    notifier->notifyRehidden("Mail", "org.mail");
    notifier->notifyRehidden("News", "org.news");
    notifier->notifyRehidden("Post", "org.mail");
    EXPECT_THAT(center.calls, ElementsAre("categories", "add", "categories", "add", "categories", "add"));
    EXPECT_THAT(center.delivered,
                ElementsAre(NotificationRequest{"rehidden.org.news",
                                                {"Hidden by Curtain",
                                                 "News stays hidden because Curtain privacy mode is active.",
                                                 "CURTAIN_REHIDDEN",
                                                 {{"bundleID", "org.news"}}}},
                            NotificationRequest{"rehidden.org.mail",
                                                {"Hidden by Curtain",
                                                 "Post stays hidden because Curtain privacy mode is active.",
                                                 "CURTAIN_REHIDDEN",
                                                 {{"bundleID", "org.mail"}}}}));
    EXPECT_EQ(uuids.last, 0);
}

TEST_F(NotifierTest, ALatinNameDoesNotTurnAnArabicSentenceRound) {
    notifier->languageProvider = [] { return "ar"; };
    notifier->notifyRehidden("News", "org.news");
    EXPECT_EQ(center.delivered.front().content.body,
              "\u200FNews — يبقى التطبيق مخفيًا لأن وضع الخصوصية مفعّل.");
}

TEST_F(NotifierTest, PromptsStackAndHaveNoButtons) {
    notifier->notifyPrompt();
    notifier->notifyPrompt();
    EXPECT_THAT(center.calls, ElementsAre("add", "add"));
    const Platform::NotificationContent content{
        "Going to share your screen?", "Press your shortcut to turn on privacy mode.", "", {}};
    EXPECT_THAT(center.delivered,
                ElementsAre(NotificationRequest{"uuid-1", content}, NotificationRequest{"uuid-2", content}));
}

TEST_F(NotifierTest, SpeaksTheLanguageOfTheMoment) {
    std::string language = "en";
    notifier->languageProvider = [&] { return language; };
    notifier->notifyActivated();
    language = "es";
    notifier->notifyActivated();
    EXPECT_EQ(center.delivered[0].content.title, "Privacy mode on");
    EXPECT_EQ(center.delivered[1].content.title, "Modo de privacidad activado");
    EXPECT_EQ(center.categories[0].actions[0].title, "Deshacer");
    EXPECT_EQ(center.categories[1].actions[0].title, "Mostrar");
}

TEST_F(NotifierTest, PromptSpeaksTheLanguageOfTheMomentToo) {
    notifier->notifyPrompt();
    notifier->languageProvider = [] { return "es"; };
    notifier->notifyPrompt();
    EXPECT_NE(center.delivered[0].content, center.delivered[1].content);
}

struct AnswerTest : NotifierTest {
    void SetUp() override {
        NotifierTest::SetUp();
        notifier->becomeDelegate();
        notifier->notifyActivated();
        notifier->notifyRehidden("Mail", "org.mail");
        notifier->notifyPrompt();
    }

    NotificationRequest activated() const { return center.delivered[0]; }
    NotificationRequest rehidden() const { return center.delivered[1]; }
    NotificationRequest prompt() const { return center.delivered[2]; }

    void expect(int undo, const std::vector<std::string>& reveal) {
        EXPECT_EQ(undone, undo);
        EXPECT_EQ(revealed, reveal);
        EXPECT_EQ(center.completions, 1);
    }
};

TEST_F(AnswerTest, UndoUndoes) {
    center.answer(activated(), "CURTAIN_UNDO");
    expect(1, {});
}

TEST_F(AnswerTest, RevealReveals) {
    center.answer(rehidden(), "CURTAIN_REVEAL");
    expect(0, {"org.mail"});
}

TEST_F(AnswerTest, ClickOnARehiddenNoticeReveals) {
    center.answer(rehidden(), defaultAction);
    expect(0, {"org.mail"});
}

TEST_F(AnswerTest, ClickOnAnActivatedNoticeDoesNothing) {
    center.answer(activated(), defaultAction);
    expect(0, {});
}

TEST_F(AnswerTest, ClickOnAPromptDoesNothing) {
    center.answer(prompt(), defaultAction);
    expect(0, {});
}

TEST_F(AnswerTest, OtherActionsOnlyComplete) {
    center.answer(rehidden(), "com.apple.UNNotificationDismissActionIdentifier");
    expect(0, {});
}

TEST_F(AnswerTest, RevealWithoutTheAppsIdentifierDoesNothing) {
    auto request = rehidden();
    request.content.userInfo = {{"other", "org.mail"}};
    center.answer(request, "CURTAIN_REVEAL");
    expect(0, {});
}

TEST_F(AnswerTest, AnswersWithoutCallbacksAreIgnored) {
    notifier->onUndo = nullptr;
    notifier->onReveal = nullptr;
    center.answer(activated(), "CURTAIN_UNDO");
    center.answer(rehidden(), "CURTAIN_REVEAL");
    center.answer(rehidden(), defaultAction);
    EXPECT_EQ(center.completions, 3);
}

TEST_F(AnswerTest, IsPresentedAsABannerWithASound) {
    std::vector<std::uint64_t> options;
    for (const auto& request : center.delivered) {
        center.delegate->willPresent(request, [&](std::uint64_t value) { options.push_back(value); });
    }
    EXPECT_THAT(options, ElementsAre(18, 18, 18));
}

struct AuthorizationTest : NotifierTest, testing::WithParamInterface<bool> {};

TEST_P(AuthorizationTest, IsAskedForAndItsAnswerComesOverTheMainQueue) {
    int completions = 0;
    notifier->requestAuthorization([&] { ++completions; });
    EXPECT_THAT(center.authorizationOptions, ElementsAre(6));
    queue.runReady();
    EXPECT_EQ(completions, 0);
    center.pendingAuthorizations.at(0)(GetParam());
    EXPECT_EQ(completions, 0) << "not from inside the centre's call";
    queue.runReady();
    EXPECT_EQ(completions, 1);
}

INSTANTIATE_TEST_SUITE_P(Answers, AuthorizationTest, testing::Bool());

TEST(NotificationCheckerTest, OpensTheFocusSettings) {
    TestSupport::FakeUrlOpener opener;
    EXPECT_TRUE(Curtain::NotificationChecker::openFocusSettings(opener));
    EXPECT_THAT(opener.opened, ElementsAre("x-apple.systempreferences:com.apple.Focus-Settings.extension"));
    opener.canOpen = false;
    EXPECT_FALSE(Curtain::NotificationChecker::openFocusSettings(opener));
}

TEST_F(NotifierTest, ThatNothingIsHiddenIsSaidOnceAndGoesWithPrivacyMode) {
    notifier->notifyPrivacyModeInVain("Because.");
    notifier->notifyPrivacyModeInVain("For another reason.");
    ASSERT_EQ(center.delivered.size(), 1U);
    EXPECT_EQ(center.delivered[0].content.title, "Privacy mode has no effect");
    EXPECT_EQ(center.delivered[0].content.body, "For another reason.");
    // It can be undone like any other activation.
    EXPECT_EQ(center.delivered[0].content.categoryIdentifier, "CURTAIN_ACTIVATED");
    notifier->withdrawPrivacyNotices();
    EXPECT_THAT(center.delivered, IsEmpty());
    makeWithoutBundle();
    center.calls.clear();
    notifier->notifyPrivacyModeInVain("Because.");
    EXPECT_THAT(center.calls, IsEmpty());
}

} // namespace
