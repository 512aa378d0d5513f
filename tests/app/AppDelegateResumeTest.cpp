#include "Curtain/PlatformWording.h"
#include "tests/app/AppDelegateFixture.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// Beyond all delays.
constexpr double longTime = 10;

struct ResumeTest : TestSupport::AppDelegateFixture {
    void SetUp() override {
        makePrivate({"a", "b", "c"});
        change([](auto& record) { record.hasOnboarded = true; });
    }

    /// Privacy mode is on because the screen is shared.
    void launchInAShare() {
        change([](auto& record) { record.autoDetectEnabled = true; });
        fakes.workspace.run("a");
        launch();
        fakes.screenWatcherProbe.isWatched = true;
        fakes.mainQueue.advance(longTime);
    }

    /// The same, and the desktop is to keep its notices.
    void launchInAShareThatHoldsNotices() {
        change([](auto& record) {
            record.checkNotifications = true;
            record.notificationsMarkedHandled = false;
        });
        fakes.doNotDisturb.turn(false);
        launchInAShare();
    }

    /// The program ends without a chance to do anything, and is started again.
    void crashAndStart() {
        const auto note = fakes.sessionNote.kept;
        const bool isQuietHeld = fakes.doNotDisturb.isHeld();
        delegate.reset();
        fakes.sessionNote.kept = note;
        if (isQuietHeld) {
            fakes.doNotDisturb.leaveHeld();
        }
        start();
    }

    void start() {
        takeCalls();
        fakes.appShield.covered.clear();
        fakes.userNotificationCenter.delivered.clear();
        delegate = std::make_unique<Curtain::AppDelegate>(fakes.platform);
        launch();
    }

    bool looksClosed() { return fakes.statusBar.images.back().source == "/resources/close.pdf"; }
};

TEST_F(ResumeTest, PrivacyModeGoesOnAfterACrashAndGivesBackWhatItHadHidden) {
    fakes.workspace.run("a");
    fakes.workspace.run("b").hidden = true;
    launch();
    pressShortcut();
    crashAndStart();
    EXPECT_TRUE(looksClosed());
    EXPECT_THAT(fakes.appShield.covered, ElementsAre("a", "b", "c"));
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    pressShortcut();
    EXPECT_FALSE(looksClosed());
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_EQ(fakes.sessionNote.kept, std::nullopt);
}

TEST_F(ResumeTest, ItIsWrittenDownBeforeAnythingIsHidden) {
    fakes.workspace.run("a");
    fakes.workspace.run("b");
    launch();
    std::vector<std::string> callsAtEachNote;
    fakes.sessionNote.onKeep = [&] {
        const auto& note = fakes.sessionNote.kept;
        for (const auto& call : fakes.workspace.calls) {
            // All that has been hidden is in there.
            EXPECT_TRUE(note && note->find('"' + call.substr(5) + '"', note->find("hiddenByUs")) <
                                    note->find("isQuiet"));
        }
        callsAtEachNote.push_back(std::to_string(fakes.workspace.calls.size()));
    };
    pressShortcut();
    fakes.sessionNote.onKeep = nullptr;
    EXPECT_THAT(callsAtEachNote, ElementsAre("0", "0", "1"));
}

TEST_F(ResumeTest, TheUserIsToldAndCanTakeItBack) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    crashAndStart();
    ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    const auto notice = fakes.userNotificationCenter.delivered.front();
    EXPECT_EQ(notice.content.title, "Privacy mode on");
    EXPECT_EQ(notice.content.body,
              Curtain::PlatformWording::string(Curtain::PlatformKey::privacyModeResumed, "en"));
    takeCalls();
    fakes.userNotificationCenter.answer(notice, Curtain::Notifier::undoAction);
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
}

TEST_F(ResumeTest, WhatCameUpMeanwhileIsHiddenAndGivenBack) {
    auto& app = fakes.workspace.run("a");
    launch();
    pressShortcut();
    app.hidden = false;
    fakes.workspace.run("c");
    crashAndStart();
    EXPECT_THAT(takeCalls(), ElementsAre("hide a", "hide c"));
    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2", "unhide c", "activate c 2"));
}

TEST_F(ResumeTest, WhatWasRevealedStaysSo) {
    fakes.workspace.run("a");
    fakes.workspace.run("b");
    launch();
    pressShortcut();
    fakes.userNotificationCenter.delegate->didReceive(
        {Curtain::Notifier::revealAction,
         {"rehidden.a",
          {"", "", Curtain::Notifier::rehiddenCategory, {{Curtain::Notifier::bundleKey, "a"}}}}},
        [] {});
    crashAndStart();
    EXPECT_THAT(takeCalls(), ElementsAre("hide b"));
}

TEST_F(ResumeTest, ASecondCrashLosesNothing) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    crashAndStart();
    crashAndStart();
    takeCalls();
    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
}

TEST_F(ResumeTest, WhatEndsEveryStartIsNotTakenUpAThirdTime) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    crashAndStart();
    crashAndStart();
    EXPECT_TRUE(looksClosed());
    for (int start = 0; start < 2; ++start) {
        crashAndStart();
        EXPECT_FALSE(looksClosed());
        EXPECT_THAT(takeCalls(), IsEmpty());
        EXPECT_THAT(fakes.appShield.covered, IsEmpty());
        ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
        const auto& notice = fakes.userNotificationCenter.delivered.front().content;
        EXPECT_EQ(notice.title, "Privacy mode off");
        EXPECT_EQ(notice.body,
                  Curtain::PlatformWording::string(Curtain::PlatformKey::privacyModeNotResumed, "en"));
    }
    pressShortcut();
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
    crashAndStart();
    EXPECT_FALSE(looksClosed()) << "nor is what was switched on a moment before the end";
    pressShortcut();
    fakes.mainQueue.advance(longTime + 1);
    crashAndStart();
    EXPECT_TRUE(looksClosed());
}

TEST_F(ResumeTest, AStartThatGotPastItCountsForNothing) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    for (int crash = 0; crash < 4; ++crash) {
        crashAndStart();
        EXPECT_TRUE(looksClosed()) << crash;
        fakes.mainQueue.advance(longTime + 1);
    }
}

TEST_F(ResumeTest, QuitRestoresNothingAndIsNotTakenUp) {
    auto& app = fakes.workspace.run("a");
    launch();
    pressShortcut();
    takeCalls();
    delegate.reset();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_TRUE(app.hidden);
    start();
    EXPECT_FALSE(looksClosed());
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(ResumeTest, ARestartWaitsForTheEndOfPrivacyMode) {
    launch();
    pressShortcut();
    delegate->restart();
    EXPECT_FALSE(fakes.application.isRelaunched);
    pressShortcut();
    delegate->restart();
    EXPECT_TRUE(fakes.application.isRelaunched);
}

TEST_F(ResumeTest, ACrashWhilePrivacyModeIsOffIsForgotten) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    pressShortcut();
    crashAndStart();
    EXPECT_FALSE(looksClosed());
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
}

TEST_F(ResumeTest, ADamagedNoteIsIgnored) {
    fakes.sessionNote.kept = "{\"version\": 1, \"targets\": [\"a\"]";
    fakes.workspace.run("a");
    launch();
    EXPECT_FALSE(looksClosed());
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(ResumeTest, ThatAShareSwitchedItOnIsWrittenDownBeforeAnythingIsHidden) {
    int writes = 0;
    fakes.sessionNote.onKeep = [&] {
        if (const auto& note = fakes.sessionNote.kept) {
            EXPECT_NE(note->find("\"wasAutomatic\": true"), std::string::npos);
            ++writes;
        }
    };
    launchInAShare();
    EXPECT_GT(std::exchange(writes, 0), 0);
    crashAndStart();
    EXPECT_GT(writes, 0);
    fakes.sessionNote.onKeep = nullptr;
}

TEST_F(ResumeTest, WhatAShareSwitchedOnEndsWithTheShare) {
    launchInAShare();
    crashAndStart();
    EXPECT_TRUE(looksClosed());
    fakes.mainQueue.advance(longTime);
    fakes.screenWatcherProbe.isWatched = false;
    fakes.mainQueue.advance(longTime);
    EXPECT_FALSE(looksClosed());
}

TEST_F(ResumeTest, WhatAShareSwitchedOnEndsWhereTheShareEndedMeanwhile) {
    launchInAShare();
    for (const auto isWatched : {std::optional<bool>(), std::optional(false)}) {
        fakes.screenWatcherProbe.isWatched = isWatched;
        crashAndStart();
        fakes.mainQueue.advance(9.9);
        EXPECT_TRUE(looksClosed());
        fakes.mainQueue.advance(longTime);
        // What is not known is no end.
        EXPECT_EQ(looksClosed(), !isWatched);
    }
    EXPECT_EQ(takeCalls().back(), "activate a 2");
}

TEST_F(ResumeTest, AShareThatIsNotNoticedAtOnceIsNoEnd) {
    fakes.workspace.run("us.zoom.xos");
    launchInAShare();
    fakes.screenWatcherProbe.isWatched = false;
    crashAndStart();
    takeCalls();
    fakes.mainQueue.advance(4);
    fakes.screenWatcherProbe.isWatched = true;
    fakes.mainQueue.advance(longTime);
    EXPECT_TRUE(looksClosed());
    EXPECT_THAT(takeCalls(), IsEmpty());
    fakes.screenWatcherProbe.isWatched = false;
    fakes.mainQueue.advance(longTime);
    EXPECT_FALSE(looksClosed());
}

TEST_F(ResumeTest, AShareOfWhichNothingIsKnownAtFirstEndsWhenItIsKnown) {
    launchInAShare();
    fakes.screenWatcherProbe.isWatched = std::nullopt;
    crashAndStart();
    fakes.mainQueue.advance(longTime + 1);
    EXPECT_TRUE(looksClosed());
    fakes.screenWatcherProbe.isWatched = false;
    fakes.mainQueue.advance(longTime);
    EXPECT_FALSE(looksClosed());
}

TEST_F(ResumeTest, WhatTheUserSwitchedOnOutlivesAShare) {
    change([](auto& record) { record.autoDetectEnabled = true; });
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    crashAndStart();
    fakes.screenWatcherProbe.isWatched = true;
    fakes.mainQueue.advance(longTime);
    fakes.screenWatcherProbe.isWatched = false;
    fakes.mainQueue.advance(longTime);
    EXPECT_TRUE(looksClosed());
}

TEST_F(ResumeTest, NoticesStayOffTheScreenUntilPrivacyModeEnds) {
    launchInAShareThatHoldsNotices();
    ASSERT_TRUE(fakes.doNotDisturb.isHeld());
    crashAndStart();
    fakes.mainQueue.advance(longTime);
    EXPECT_TRUE(fakes.doNotDisturb.isHeld());
    pressShortcut();
    fakes.screenWatcherProbe.isWatched = false;
    fakes.mainQueue.advance(longTime);
    EXPECT_FALSE(fakes.doNotDisturb.isHeld());
}

TEST_F(ResumeTest, ThatNoticesStayOffTheScreenIsWrittenDownBeforeAnythingIsHidden) {
    int writes = 0;
    fakes.sessionNote.onKeep = [&] {
        if (const auto& note = fakes.sessionNote.kept) {
            EXPECT_NE(note->find("\"isQuiet\": true"), std::string::npos);
            ++writes;
        }
    };
    launchInAShareThatHoldsNotices();
    EXPECT_GT(std::exchange(writes, 0), 0);
    crashAndStart();
    EXPECT_GT(writes, 0);
    fakes.sessionNote.onKeep = nullptr;
}

TEST_F(ResumeTest, ARestartWaitsUntilNoticesAreNoLongerHeldBack) {
    launchInAShareThatHoldsNotices();
    pressShortcut();
    ASSERT_TRUE(fakes.doNotDisturb.isHeld());
    delegate->restart();
    EXPECT_FALSE(fakes.application.isRelaunched);
    fakes.screenWatcherProbe.isWatched = false;
    fakes.mainQueue.advance(longTime);
    delegate->restart();
    EXPECT_TRUE(fakes.application.isRelaunched);
}

TEST_F(ResumeTest, WindowsThatTheSessionTellsOfLaterAreHiddenThen) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    fakes.workspace.everyWindowIsKnown = false;
    fakes.workspace.quitAll();
    crashAndStart();
    EXPECT_TRUE(looksClosed());
    EXPECT_THAT(takeCalls(), IsEmpty());
    fakes.workspace.run("a").hidden = true;
    fakes.workspace.everyWindowIsKnown = true;
    fakes.systemVersion.obstacle.reset();
    fakes.mainQueue.advance(longTime);
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
}

TEST_F(ResumeTest, WhereNothingCanBeHiddenTheUserIsToldThatInstead) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    fakes.systemVersion.obstacle = Platform::HidingObstacle::noWindowManager;
    crashAndStart();
    ASSERT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    EXPECT_EQ(fakes.userNotificationCenter.delivered.front().identifier, "privacyModeInVain");
}

} // namespace
