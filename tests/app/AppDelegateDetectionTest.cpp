#include "Curtain/MeetingReadinessView.h"
#include "tests/app/AppDelegateFixture.h"

namespace {

using CurtainCore::AutoDetectMode;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double poll = 3.0;

struct DetectionTest : TestSupport::AppDelegateFixture {
    void SetUp() override {
        change([](auto& record) { record.hasOnboarded = true; });
        makePrivate({"a"});
        fakes.workspace.run("a");
    }

    void watch(std::optional<bool> isWatched) {
        fakes.screenWatcherProbe.isWatched = isWatched;
        fakes.mainQueue.advance(poll);
    }

    std::vector<std::string> titles() {
        std::vector<std::string> result;
        for (const auto& request : fakes.userNotificationCenter.added) {
            result.push_back(request.content.title);
        }
        return result;
    }

    bool isPrivate() { return fakes.statusBar.images.back().source != "/resources/open.pdf"; }
};

TEST_F(DetectionTest, ASharedScreenSwitchesPrivacyModeOnAndSaysSo) {
    launch();
    watch(true);
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    EXPECT_TRUE(isPrivate());
    ASSERT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_EQ(fakes.userNotificationCenter.added[0].content.categoryIdentifier, "CURTAIN_ACTIVATED");
}

TEST_F(DetectionTest, TheEndOfTheSharingUndoesIt) {
    launch();
    watch(true);
    takeCalls();
    watch(false);
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_FALSE(isPrivate());
}

TEST_F(DetectionTest, WhatNobodyKnowsNeitherUndoesItNorSwitchesItOn) {
    launch();
    watch(std::nullopt);
    EXPECT_FALSE(isPrivate());
    watch(true);
    takeCalls();
    for (int question = 0; question < 100; ++question) {
        watch(std::nullopt);
    }
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_TRUE(isPrivate());
    watch(false);
    EXPECT_FALSE(isPrivate());
}

TEST_F(DetectionTest, ACallAppAloneUndoesItTooAndSwitchesNothingOn) {
    fakes.workspace.run("us.zoom.xos");
    launch();
    fakes.mainQueue.advance(poll);
    EXPECT_FALSE(isPrivate());
    watch(true);
    EXPECT_TRUE(isPrivate());
    watch(false);
    EXPECT_FALSE(isPrivate());
}

TEST_F(DetectionTest, InPromptModeOnlyTheQuestionIsPosted) {
    change([](auto& record) { record.autoDetectMode = AutoDetectMode::promptOnly; });
    launch();
    watch(true);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_FALSE(isPrivate());
    ASSERT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_EQ(fakes.userNotificationCenter.added[0].content.categoryIdentifier, "");
    // It is read at each report, not at the launch.
    watch(false);
    change([](auto& record) { record.autoDetectMode = AutoDetectMode::activateAndNotify; });
    watch(true);
    EXPECT_TRUE(isPrivate());
}

TEST_F(DetectionTest, PrivacyModeOfTheUserIsNeitherAnnouncedNorUndone) {
    launch();
    pressShortcut();
    takeCalls();
    watch(true);
    watch(false);
    EXPECT_TRUE(isPrivate());
    // The same while a call app runs, and at its end.
    fakes.workspace.run("us.zoom.xos");
    watch(true);
    watch(false);
    EXPECT_TRUE(isPrivate());
    fakes.workspace.quitAll();
    watch(false);
    EXPECT_TRUE(isPrivate());
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty());
}

TEST_F(DetectionTest, TheShortcutTakesOverFromDetection) {
    launch();
    watch(true);
    pressShortcut();
    pressShortcut();
    EXPECT_TRUE(isPrivate());
    watch(false);
    EXPECT_TRUE(isPrivate());
}

TEST_F(DetectionTest, ToolTipSaysWhatTheNoticeHasSaid) {
    launch();
    watch(true);
    EXPECT_EQ(fakes.statusBar.toolTip,
              "Curtain — Privacy mode on (Ctrl+Alt+Super+H) — Detected possible screen sharing.");
    fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.at(0), "CURTAIN_UNDO");
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off (Ctrl+Alt+Super+H)");
    pressShortcut();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode on (Ctrl+Alt+Super+H)");
}

TEST_F(DetectionTest, UndoSwitchesItOffOnce) {
    launch();
    watch(true);
    takeCalls();
    const auto request = fakes.userNotificationCenter.added.at(0);
    fakes.userNotificationCenter.answer(request, "CURTAIN_UNDO");
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_FALSE(isPrivate());
    const auto images = fakes.statusBar.images.size();
    fakes.userNotificationCenter.answer(request, "CURTAIN_UNDO");
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(fakes.statusBar.images, SizeIs(images));
}

TEST_F(DetectionTest, ClickingTheNoticeItselfUndoesNothing) {
    launch();
    watch(true);
    fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.at(0),
                                        Platform::NotificationResponse::defaultActionIdentifier);
    EXPECT_TRUE(isPrivate());
}

TEST_F(DetectionTest, IsNotStartedWhereItIsSwitchedOff) {
    change([](auto& record) { record.autoDetectEnabled = false; });
    launch();
    watch(true);
    EXPECT_FALSE(isPrivate());
    // A change counts from the next launch on.
    change([](auto& record) { record.autoDetectEnabled = true; });
    watch(true);
    EXPECT_FALSE(isPrivate());
}

TEST_F(DetectionTest, WithoutABundleNotificationsAreOffAndDetectionWorks) {
    delegate.reset();
    fakes.application.identifier.reset();
    delegate = std::make_unique<Curtain::AppDelegate>(fakes.platform);
    launch();
    EXPECT_THAT(fakes.log.lines, ElementsAre("Curtain: notificaciones desactivadas (sin bundle)"));
    watch(true);
    EXPECT_TRUE(isPrivate());
    EXPECT_THAT(fakes.userNotificationCenter.calls, IsEmpty());
}

TEST_F(DetectionTest, NoticesSpeakTheLanguageOfTheMoment) {
    launch();
    watch(true);
    const auto english = titles().at(0);
    watch(false);
    change([](auto& record) { record.language = CurtainCore::AppLanguage::es; });
    watch(true);
    EXPECT_NE(titles().at(1), english);
}

struct RehideNoticeTest : DetectionTest {
    void returnOf(const std::string& identifier) {
        fakes.workspace.bringToFront(identifier);
        fakes.mainQueue.advance(0.2);
    }

    /// An app that runs and is hidden.
    auto& hideOnly(const std::string& identifier) {
        auto& app = fakes.workspace.run(identifier);
        makePrivate({identifier});
        launch();
        pressShortcut();
        return app;
    }

    /// The same, which has returned and not been hidden in time.
    auto& returnUnhidden(const std::string& identifier) {
        auto& app = hideOnly(identifier);
        app.obeys = false;
        returnOf(identifier);
        return app;
    }

    std::vector<std::string> noticed() {
        std::vector<std::string> result;
        for (const auto& request : fakes.userNotificationCenter.added) {
            if (request.content.categoryIdentifier == "CURTAIN_REHIDDEN") {
                result.push_back(request.identifier);
            }
        }
        return result;
    }
};

TEST_F(RehideNoticeTest, TwiceWithinFourSecondsIsNoticedOnce) {
    launch();
    pressShortcut();
    takeCalls();
    returnOf("a");
    fakes.mainQueue.advance(3.7);
    returnOf("a");
    EXPECT_THAT(takeCalls(), ElementsAre("hide a", "hide a"));
    EXPECT_THAT(noticed(), ElementsAre("rehidden.a"));
}

TEST_F(RehideNoticeTest, AfterFourSecondsItIsNoticedAgain) {
    launch();
    pressShortcut();
    returnOf("a");
    fakes.mainQueue.advance(3.8);
    returnOf("a");
    EXPECT_THAT(noticed(), ElementsAre("rehidden.a", "rehidden.a"));
}

TEST_F(RehideNoticeTest, TheLimitIsPerApp) {
    makePrivate({"a", "b"});
    fakes.workspace.run("b");
    launch();
    pressShortcut();
    fakes.workspace.bringToFront("a");
    fakes.workspace.bringToFront("b");
    fakes.mainQueue.advance(0.2);
    EXPECT_THAT(noticed(), ElementsAre("rehidden.a", "rehidden.b"));
}

TEST_F(RehideNoticeTest, AWatchedScreenShowsNoticeOfNothingAndStartsNoInterval) {
    launch();
    pressShortcut();
    fakes.screenWatcherProbe.isWatched = true;
    returnOf("a");
    EXPECT_THAT(noticed(), IsEmpty());
    fakes.screenWatcherProbe.isWatched = false;
    returnOf("a");
    EXPECT_THAT(noticed(), ElementsAre("rehidden.a"));
}

TEST_F(RehideNoticeTest, WhileNobodyKnowsWhoWatchesNoAppIsNamed) {
    launch();
    pressShortcut();
    fakes.screenWatcherProbe.isWatched = std::nullopt;
    returnOf("a");
    EXPECT_THAT(noticed(), IsEmpty());
    fakes.screenWatcherProbe.isWatched = false;
    returnOf("a");
    EXPECT_THAT(noticed(), ElementsAre("rehidden.a"));
}

TEST_F(RehideNoticeTest, WhereTheScreenCannotBeAskedAboutNoticesArePosted) {
    delegate.reset();
    fakes.screenWatcherProbe.isPresent = false;
    delegate = std::make_unique<Curtain::AppDelegate>(fakes.platform);
    launch();
    pressShortcut();
    returnOf("a");
    EXPECT_THAT(noticed(), ElementsAre("rehidden.a"));
}

TEST_F(RehideNoticeTest, TheNameIsTheRunningAppsThenTheListedOneThenTheIdentifier) {
    change([](auto& record) { record.targetApps = {{"a", "Listed"}}; });
    launch();
    pressShortcut();
    returnOf("a");
    EXPECT_THAT(fakes.userNotificationCenter.added.back().content.body, testing::StartsWith("a "));
    fakes.workspace.nameOf("a") = std::nullopt;
    fakes.mainQueue.advance(5.0);
    returnOf("a");
    EXPECT_THAT(fakes.userNotificationCenter.added.back().content.body, testing::StartsWith("Listed "));
    change([](auto& record) { record.targetApps.clear(); });
    fakes.mainQueue.advance(5.0);
    returnOf("a");
    EXPECT_THAT(fakes.userNotificationCenter.added.back().content.body, testing::StartsWith("a "));
}

TEST_F(RehideNoticeTest, RevealShowsTheAppAndDropsItFromPrivacyMode) {
    launch();
    pressShortcut();
    returnOf("a");
    takeCalls();
    EXPECT_THAT(fakes.appShield.covered, testing::Contains("a"));
    fakes.mainQueue.advance(1.0);
    const auto images = fakes.statusBar.images.size();
    fakes.processRunner.runs.clear();
    fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.back(), "CURTAIN_REVEAL");
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_THAT(fakes.appShield.covered, testing::Not(testing::Contains("a")));
    EXPECT_TRUE(isPrivate());
    EXPECT_THAT(fakes.statusBar.images, SizeIs(images + 1));
    // The readiness is looked at anew, and once more when the windows have settled.
    const auto look = TestSupport::FakeProcessRunner::readingIcons();
    EXPECT_THAT(fakes.processRunner.runs, ElementsAre(look));
    fakes.mainQueue.advance(0.39);
    EXPECT_THAT(fakes.processRunner.runs, ElementsAre(look));
    fakes.mainQueue.advance(0.02);
    EXPECT_THAT(fakes.processRunner.runs, ElementsAre(look, look));
    returnOf("a");
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(RehideNoticeTest, IsPostedOnlyOnceTheAppIsSeenHidden) {
    auto& app = returnUnhidden("slow");
    fakes.mainQueue.advance(0.5);
    EXPECT_THAT(noticed(), IsEmpty());
    app.hidden = true;
    fakes.mainQueue.advance(0.1);
    EXPECT_THAT(noticed(), ElementsAre("rehidden.slow"));
}

TEST_F(RehideNoticeTest, NothingIsSaidOfAnAppThatStaysOnTheScreen) {
    auto& app = returnUnhidden("stubborn");
    fakes.mainQueue.advance(2.5);
    // Its user hides it much later.
    app.hidden = true;
    fakes.mainQueue.advance(10.0);
    EXPECT_THAT(noticed(), IsEmpty());
}

TEST_F(RehideNoticeTest, NothingIsSaidWherePrivacyModeEndsBeforeTheAppIsHidden) {
    auto& app = returnUnhidden("slow");
    pressShortcut();
    app.hidden = true;
    fakes.mainQueue.advance(3.0);
    EXPECT_THAT(noticed(), IsEmpty());
}

TEST_F(RehideNoticeTest, NothingIsSaidOfAnEarlierReturnOnceTheAppIsRevealed) {
    auto& app = hideOnly("slow");
    returnOf("slow");
    fakes.mainQueue.advance(3.6);
    app.obeys = false;
    returnOf("slow");
    fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.back(), "CURTAIN_REVEAL");
    fakes.userNotificationCenter.added.clear();
    fakes.mainQueue.advance(0.5);
    // Its user minimises it.
    app.hidden = true;
    fakes.mainQueue.advance(3.0);
    EXPECT_THAT(noticed(), IsEmpty());
}

TEST_F(RehideNoticeTest, NothingIsSaidOfAReturnBeforePrivacyModeWasSwitchedOnAnew) {
    auto& app = returnUnhidden("slow");
    pressShortcut();
    app.obeys = true;
    pressShortcut();
    ASSERT_TRUE(app.hidden);
    fakes.mainQueue.advance(3.0);
    EXPECT_THAT(noticed(), IsEmpty());
}

TEST_F(RehideNoticeTest, NothingIsSaidOfAnAppThatWasNotSeen) {
    launch();
    pressShortcut();
    const auto app = fakes.workspace.runningApplicationsWithBundleIdentifier("a").at(0);
    ASSERT_TRUE(app->isHidden());
    fakes.workspace.post(Platform::WorkspaceNotification::didLaunchApplication, app);
    fakes.mainQueue.advance(3.0);
    EXPECT_THAT(noticed(), IsEmpty());
    // A switch-on hides the app before its return has been answered.
    fakes.workspace.bringToFront("a");
    pressShortcut();
    pressShortcut();
    ASSERT_TRUE(app->isHidden());
    fakes.mainQueue.advance(3.0);
    EXPECT_THAT(noticed(), IsEmpty());
}

TEST_F(RehideNoticeTest, AReturnThatIsAnnouncedAgainWhileTheAppIsOnItsWayOutIsNoticedOnce) {
    auto& app = fakes.workspace.run("twice");
    makePrivate({"twice"});
    launch();
    pressShortcut();
    app.obeys = false;
    app.hidden = false;
    fakes.workspace.bringToFront("twice");
    fakes.mainQueue.advance(0.05);
    fakes.workspace.bringToFront("twice");
    fakes.mainQueue.advance(0.17);
    app.hidden = true;
    fakes.mainQueue.advance(5.0);
    EXPECT_THAT(noticed(), ElementsAre("rehidden.twice"));
}

TEST_F(RehideNoticeTest, AnAppWhoseWindowComesLaterIsNoticedOnceItIsHidden) {
    auto& app = hideOnly("late");
    app.obeys = false;
    fakes.workspace.bringToFront("late");
    app.hidden = true;
    fakes.mainQueue.advance(0.5);
    EXPECT_THAT(noticed(), IsEmpty()) << "there was no window yet";
    app.hidden = false;
    fakes.mainQueue.advance(0.1);
    app.hidden = true;
    fakes.mainQueue.advance(0.1);
    EXPECT_THAT(noticed(), ElementsAre("rehidden.late"));
}

TEST_F(RehideNoticeTest, NothingIsSaidWhereNothingCanBeHiddenOrSeen) {
    launch();
    pressShortcut();
    fakes.systemVersion.obstacle = Platform::HidingObstacle::windowManagerIgnoresHiding;
    returnOf("a");
    fakes.mainQueue.advance(5.0);
    EXPECT_THAT(noticed(), IsEmpty());
    fakes.systemVersion.obstacle.reset();
    fakes.workspace.everyWindowIsKnown = false;
    returnOf("a");
    fakes.mainQueue.advance(5.0);
    EXPECT_THAT(noticed(), IsEmpty());
    fakes.workspace.everyWindowIsKnown = true;
    returnOf("a");
    EXPECT_THAT(noticed(), ElementsAre("rehidden.a"));
}

TEST_F(RehideNoticeTest, GoesWithPrivacyMode) {
    launch();
    pressShortcut();
    returnOf("a");
    ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    pressShortcut();
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
}

TEST_F(RehideNoticeTest, GoesWhenItsAppIsRevealed) {
    launch();
    pressShortcut();
    returnOf("a");
    fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.back(), "CURTAIN_REVEAL");
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
}

TEST_F(DetectionTest, NoticeOfTheActivationGoesWithPrivacyModeHoweverItEnds) {
    launch();
    const std::vector<std::function<void()>> ends{
        [&] { watch(false); },
        [&] {
            fakes.userNotificationCenter.answer(fakes.userNotificationCenter.delivered.at(0), "CURTAIN_UNDO");
        },
        [&] { pressShortcut(); }};
    for (const auto& end : ends) {
        watch(false);
        watch(true);
        ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
        end();
        EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
    }
}

struct InVainTest : DetectionTest {
    void SetUp() override {
        DetectionTest::SetUp();
        change([](auto& record) {
            record.hasOnboarded = true;
            record.notificationsMarkedHandled = true;
        });
        fakes.systemVersion.obstacle = Platform::HidingObstacle::waylandSession;
        launch();
    }

    static constexpr auto title = "Privacy mode has no effect";
    static constexpr auto reason = "This Wayland desktop offers no way to hide other apps.";

    std::string icon() { return fakes.statusBar.images.back().source; }

    Curtain::MeetingReadinessView& view() {
        return dynamic_cast<Curtain::MeetingReadinessView&>(*fakes.popover.content.model);
    }
};

TEST_F(InVainTest, EverySwitchOnIsAnsweredWithOneNoticeThatNothingIsHidden) {
    fakes.statusBar.click(TestSupport::leftClick);
    const std::vector<std::function<void()>> ways{[&] { pressShortcut(); }, [&] { view().hidePrivateApps(); },
                                                  [&] { view().fixEverything(); }, [&] { watch(true); }};
    for (const auto& switchOn : ways) {
        switchOn();
        ASSERT_TRUE(isPrivate());
        EXPECT_THAT(titles(), ElementsAre(title));
        EXPECT_EQ(fakes.userNotificationCenter.added.at(0).content.body, reason);
        // Further presses switch nothing on.
        view().hidePrivateApps();
        view().fixEverything();
        EXPECT_THAT(titles(), SizeIs(1));
        pressShortcut();
        EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
        fakes.userNotificationCenter.added.clear();
    }
}

TEST_F(InVainTest, NoticesCanBeUndone) {
    pressShortcut();
    fakes.userNotificationCenter.answer(fakes.userNotificationCenter.added.at(0), "CURTAIN_UNDO");
    EXPECT_FALSE(isPrivate());
}

TEST_F(InVainTest, PopoverAndToolTipSayThatTheModeHasNoEffect) {
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off (Ctrl+Alt+Super+H)");
    fakes.statusBar.click(TestSupport::leftClick);
    EXPECT_EQ(view().hidingObstacle(), reason);
    EXPECT_FALSE(view().isPrivacyModeInVain());
    pressShortcut();
    EXPECT_TRUE(view().isPrivacyModeInVain());
    EXPECT_EQ(fakes.statusBar.toolTip, std::string("Curtain — ") + title + " — " + reason);
    // The next opening asks anew.
    fakes.statusBar.click(TestSupport::leftClick);
    fakes.systemVersion.obstacle.reset();
    fakes.statusBar.click(TestSupport::leftClick);
    EXPECT_EQ(view().hidingObstacle(), "");
    EXPECT_FALSE(view().isPrivacyModeInVain());
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode on (Ctrl+Alt+Super+H)");
    pressShortcut();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off (Ctrl+Alt+Super+H)");
}

TEST_F(InVainTest, TheIconClaimsNoProtectionWhereThereIsNone) {
    EXPECT_EQ(icon(), "/resources/open.pdf");
    pressShortcut();
    EXPECT_EQ(fakes.statusBar.images.back(), (Platform::Image{"/resources/alert.pdf", 18, 18, true, ""}));
    pressShortcut();
    EXPECT_EQ(icon(), "/resources/open.pdf");
}

TEST_F(InVainTest, TheIconFollowsTheObstacle) {
    using Platform::HidingObstacle;
    fakes.systemVersion.obstacle.reset();
    pressShortcut();
    EXPECT_EQ(icon(), "/resources/close.pdf");
    for (const auto& [obstacle, expected] :
         {std::pair{std::optional(HidingObstacle::noWindowManager), "/resources/alert.pdf"},
          {std::optional(HidingObstacle::notKnownYet), "/resources/close.pdf"},
          {std::optional(HidingObstacle::windowManagerIgnoresHiding), "/resources/alert.pdf"},
          {std::optional(HidingObstacle::nextSessionNeeded), "/resources/alert.pdf"},
          {std::optional<HidingObstacle>(), "/resources/close.pdf"}}) {
        fakes.systemVersion.obstacle = obstacle;
        fakes.mainQueue.advance(2.0);
        EXPECT_EQ(icon(), expected);
    }
}

TEST_F(InVainTest, AMissingIconGivesWayToASymbolThatWarns) {
    fakes.resources.files.clear();
    pressShortcut();
    EXPECT_EQ(fakes.statusBar.images.back(),
              (Platform::Image{"/symbols/exclamationmark.triangle", 0, 0, true, "Curtain"}));
}

TEST_F(InVainTest, AnOpenPopoverHearsThatTheObstacleHasGone) {
    fakes.statusBar.click(TestSupport::leftClick);
    ASSERT_EQ(view().hidingObstacle(), reason);
    fakes.systemVersion.obstacle.reset();
    bool isTold = false;
    QObject::connect(&view(), &Curtain::MeetingReadinessView::stateChanged, [&] { isTold = true; });
    fakes.mainQueue.advance(2.0);
    EXPECT_TRUE(isTold);
}

TEST_F(InVainTest, NothingIsSaidBeforeTheSessionHasAnswered) {
    fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    fakes.statusBar.click(TestSupport::leftClick);
    pressShortcut();
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_EQ(view().hidingObstacle(), "Whether apps can be hidden in this session isn't known yet.");
    EXPECT_FALSE(view().isPrivacyModeInVain());
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode on (Ctrl+Alt+Super+H)");
    fakes.systemVersion.obstacle = Platform::HidingObstacle::windowManagerIgnoresHiding;
    fakes.mainQueue.advance(0.25);
    EXPECT_THAT(titles(), ElementsAre(title));
    EXPECT_TRUE(view().isPrivacyModeInVain());
    EXPECT_THAT(fakes.statusBar.toolTip, HasSubstr(title));
    fakes.mainQueue.advance(10.0);
    EXPECT_THAT(titles(), SizeIs(1));
}

TEST_F(InVainTest, AnAnswerThatAppsCanBeHiddenIsTakenInToo) {
    fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    fakes.statusBar.click(TestSupport::leftClick);
    pressShortcut();
    fakes.systemVersion.obstacle.reset();
    fakes.mainQueue.advance(0.25);
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_EQ(view().hidingObstacle(), "");
}

/// The session tells of its windows only after privacy mode has been switched on.
struct LateWindowsTest : InVainTest {
    void SetUp() override {
        InVainTest::SetUp();
        makePrivate({"notes", "mail"});
        fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
        fakes.workspace.everyWindowIsKnown = false;
        pressShortcut();
    }

    void tellOfWindows() {
        fakes.systemVersion.obstacle.reset();
        fakes.workspace.everyWindowIsKnown = true;
        fakes.workspace.run("notes");
        fakes.workspace.run("mail").hidden = true;
    }
};

TEST_F(LateWindowsTest, WhatIsHiddenLateIsGivenBackToo) {
    tellOfWindows();
    fakes.workspace.bringToFront("notes");
    EXPECT_THAT(takeCalls(), ElementsAre("hide notes"));
    fakes.mainQueue.advance(60.0);
    EXPECT_THAT(takeCalls(), IsEmpty());
    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide notes", "activate notes 2"));
}

TEST_F(LateWindowsTest, WindowsOfWhichNobodyTellsAreLookedAt) {
    tellOfWindows();
    fakes.mainQueue.advance(0.25);
    EXPECT_THAT(takeCalls(), ElementsAre("hide notes"));
    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide notes", "activate notes 2"));
}

TEST_F(LateWindowsTest, WhatComesLaterStaysHiddenAsEver) {
    tellOfWindows();
    fakes.mainQueue.advance(0.25);
    takeCalls();
    fakes.workspace.bringToFront("mail");
    fakes.mainQueue.advance(0.25);
    EXPECT_THAT(takeCalls(), ElementsAre("hide mail"));
    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide notes", "activate notes 2"));
}

TEST_F(LateWindowsTest, NothingIsHiddenAfterTheSwitchOff) {
    pressShortcut();
    tellOfWindows();
    fakes.workspace.bringToFront("notes");
    fakes.mainQueue.advance(60.0);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(InVainTest, WindowsAreNotAwaitedAnyMoreOnceTheSessionHasAnswered) {
    makePrivate({"notes"});
    fakes.systemVersion.obstacle.reset();
    fakes.statusBar.click(TestSupport::leftClick);
    fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    fakes.workspace.everyWindowIsKnown = false;
    pressShortcut();
    fakes.systemVersion.obstacle.reset();
    fakes.workspace.everyWindowIsKnown = true;
    fakes.mainQueue.advance(60.0);
    fakes.workspace.run("notes");
    fakes.workspace.bringToFront("notes");
    EXPECT_THAT(takeCalls(), IsEmpty());
    fakes.mainQueue.advance(0.25);
    EXPECT_THAT(takeCalls(), ElementsAre("hide notes"));
}

TEST_F(InVainTest, AnObstacleThatComesWhilePrivacyModeIsOnIsSaidOnce) {
    fakes.systemVersion.obstacle.reset();
    fakes.statusBar.click(TestSupport::leftClick);
    pressShortcut();
    fakes.mainQueue.advance(60.0);
    EXPECT_THAT(titles(), IsEmpty());
    fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    fakes.mainQueue.advance(2.0);
    EXPECT_THAT(titles(), IsEmpty());
    fakes.systemVersion.obstacle = Platform::HidingObstacle::windowManagerIgnoresHiding;
    fakes.mainQueue.advance(2.0);
    EXPECT_THAT(titles(), ElementsAre(title));
    EXPECT_TRUE(view().isPrivacyModeInVain());
    EXPECT_THAT(fakes.statusBar.toolTip, HasSubstr(title));
    fakes.mainQueue.advance(60.0);
    EXPECT_THAT(titles(), SizeIs(1));
}

TEST_F(InVainTest, TheNoticeGoesWithTheObstacleAndComesBackWithIt) {
    fakes.statusBar.click(TestSupport::leftClick);
    pressShortcut();
    ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    // As long as nobody knows, what was said stands.
    fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    fakes.mainQueue.advance(2.0);
    EXPECT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    fakes.systemVersion.obstacle.reset();
    fakes.mainQueue.advance(2.0);
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
    EXPECT_FALSE(view().isPrivacyModeInVain());
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode on (Ctrl+Alt+Super+H)");
    fakes.systemVersion.obstacle = Platform::HidingObstacle::noWindowManager;
    fakes.mainQueue.advance(2.0);
    EXPECT_THAT(titles(), ElementsAre(title, title));
    EXPECT_THAT(fakes.statusBar.toolTip, HasSubstr(title));
}

TEST_F(InVainTest, AnObstacleThatComesAfterAllTakesThePlaceOfTheNoticeThatPrivacyModeIsOn) {
    fakes.systemVersion.obstacle.reset();
    watch(true);
    ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    EXPECT_NE(titles().at(0), title);
    fakes.systemVersion.obstacle = Platform::HidingObstacle::windowManagerIgnoresHiding;
    fakes.mainQueue.advance(2.0);
    ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    EXPECT_EQ(fakes.userNotificationCenter.delivered[0].content.title, title);
}

TEST_F(InVainTest, AnObstacleThatComesAfterPrivacyModeIsNotSaid) {
    fakes.systemVersion.obstacle.reset();
    pressShortcut();
    pressShortcut();
    fakes.systemVersion.obstacle = Platform::HidingObstacle::windowManagerIgnoresHiding;
    fakes.mainQueue.advance(60.0);
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off (Ctrl+Alt+Super+H)");
}

TEST_F(InVainTest, TheSessionIsAskedEverMoreSeldom) {
    for (const auto obstacle : {std::optional(Platform::HidingObstacle::notKnownYet), {}}) {
        fakes.systemVersion.obstacle = obstacle;
        pressShortcut();
        fakes.systemVersion.questions = 0;
        fakes.mainQueue.advance(60.0);
        EXPECT_LT(fakes.systemVersion.questions, 40);
        pressShortcut();
    }
    fakes.mainQueue.advance(2.0);
    fakes.systemVersion.questions = 0;
    fakes.mainQueue.advance(60.0);
    EXPECT_EQ(fakes.systemVersion.questions, 0) << "nothing is to be known while it is off";
}

} // namespace
