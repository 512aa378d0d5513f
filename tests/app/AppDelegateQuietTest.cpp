#include "Curtain/MeetingReadinessView.h"
#include "tests/app/AppDelegateFixture.h"

#include <ostream>

namespace {

using testing::IsEmpty;
using testing::SizeIs;

/// Beyond all delays.
constexpr double longTime = 10;

struct QuietTest : TestSupport::AppDelegateFixture {
    void SetUp() override {
        makePrivate({"a"});
        fakes.workspace.run("a");
        change([](auto& record) { record.hasOnboarded = true; });
        fakes.doNotDisturb.turn(false);
    }

    void click() { fakes.statusBar.click(TestSupport::leftClick); }

    Curtain::MeetingReadinessView& view() {
        return *std::static_pointer_cast<Curtain::MeetingReadinessView>(fakes.popover.content.model);
    }

    void fixEverything() {
        if (!fakes.popover.isShown()) {
            click();
        }
        view().fixEverything();
    }

    void share(bool isShared) {
        fakes.screenWatcherProbe.isWatched = isShared;
        fakes.mainQueue.advance(3.0);
    }

    bool isHeld() { return fakes.doNotDisturb.isHeld(); }
};

/// What is done to the controller, and whether that keeps notices from the screen.
struct Entrance {
    const char* name;
    std::function<void(QuietTest&)> come;
    bool isQuiet;

    friend void PrintTo(const Entrance& entrance, std::ostream* out) { *out << entrance.name; }
};

class EntranceTest : public QuietTest, public testing::WithParamInterface<Entrance> {};

TEST_P(EntranceTest, KeepsNoticesAwayWhereTheUserWantsThemChecked) {
    launch();
    GetParam().come(*this);
    EXPECT_EQ(isHeld(), GetParam().isQuiet);
}

TEST_P(EntranceTest, LeavesNoticesToTheUserWhoHasSeenToThem) {
    change([](auto& record) { record.notificationsMarkedHandled = true; });
    launch();
    GetParam().come(*this);
    EXPECT_FALSE(isHeld());
}

TEST_P(EntranceTest, LeavesNoticesAloneThatAreNotChecked) {
    change([](auto& record) { record.checkNotifications = false; });
    launch();
    GetParam().come(*this);
    EXPECT_FALSE(isHeld());
}

TEST_P(EntranceTest, LeavesAloneWhatIsOnAlready) {
    fakes.doNotDisturb.turn(true);
    launch();
    GetParam().come(*this);
    fakes.mainQueue.advance(longTime);
    EXPECT_EQ(fakes.doNotDisturb.isOn(), true);
    EXPECT_FALSE(isHeld());
}

INSTANTIATE_TEST_SUITE_P(
    Entrances, EntranceTest,
    testing::Values(Entrance{"FixEverything", [](auto& test) { test.fixEverything(); }, true},
                    Entrance{"FixEverythingOnceMore",
                             [](auto& test) {
                                 test.fixEverything();
                                 test.fixEverything();
                             },
                             true},
                    Entrance{"FixEverythingInPrivacyMode",
                             [](auto& test) {
                                 test.pressShortcut();
                                 test.fixEverything();
                             },
                             true},
                    Entrance{"Detection", [](auto& test) { test.share(true); }, true},
                    Entrance{"DetectionInPromptMode",
                             [](auto& test) {
                                 test.change([](auto& record) {
                                     record.autoDetectMode = CurtainCore::AutoDetectMode::promptOnly;
                                 });
                                 test.share(true);
                             },
                             false},
                    Entrance{"DetectionInPrivacyMode",
                             [](auto& test) {
                                 test.pressShortcut();
                                 test.share(true);
                             },
                             false},
                    Entrance{"TheShortcut", [](auto& test) { test.pressShortcut(); }, false},
                    Entrance{"HidePrivateApps",
                             [](auto& test) {
                                 test.click();
                                 test.view().hidePrivateApps();
                             },
                             false}),
    [](const auto& entrance) { return std::string(entrance.param.name); });

/// What is done to the controller once notices are kept away, and whether they are given back at length.
struct Exit {
    const char* name;
    std::function<void(QuietTest&)> go;
    bool isGivenBack;

    friend void PrintTo(const Exit& exit, std::ostream* out) { *out << exit.name; }
};

class ExitTest : public QuietTest, public testing::WithParamInterface<Exit> {};

TEST_P(ExitTest, GivesNoticesBackFourSecondsLater) {
    launch();
    share(true);
    ASSERT_TRUE(isHeld());
    GetParam().go(*this);
    fakes.mainQueue.advance(0.9);
    EXPECT_TRUE(isHeld());
    fakes.mainQueue.advance(longTime);
    EXPECT_EQ(isHeld(), !GetParam().isGivenBack);
}

INSTANTIATE_TEST_SUITE_P(
    Exits, ExitTest,
    testing::Values(Exit{"TheEndOfTheShare", [](auto& test) { test.share(false); }, true},
                    Exit{"TheShortcut", [](auto& test) { test.pressShortcut(); }, true},
                    Exit{"Restore",
                         [](auto& test) {
                             test.click();
                             test.view().restore();
                         },
                         true},
                    Exit{"Undo",
                         [](auto& test) {
                             auto& center = test.fakes.userNotificationCenter;
                             center.answer(center.added.at(0), "CURTAIN_UNDO");
                         },
                         true},
                    Exit{"UndoInThePopover",
                         [](auto& test) {
                             test.click();
                             test.view().undo();
                         },
                         true},
                    Exit{"AProgram",
                         [](auto& test) {
                             test.delegate->privacyRequested(Curtain::AppDelegate::PrivacyRequest::off);
                         },
                         true},
                    Exit{"ASecondShare",
                         [](auto& test) {
                             test.share(false);
                             test.share(true);
                         },
                         false},
                    Exit{"Nothing", [](auto&) {}, false}),
    [](const auto& exit) { return std::string(exit.param.name); });

TEST_F(QuietTest, TheNoticeOfDetectionIsOutBefore) {
    launch();
    fakes.userNotificationCenter.isSilent = true;
    share(true);
    EXPECT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_FALSE(isHeld());
    fakes.mainQueue.advance(1);
    EXPECT_TRUE(isHeld());
}

TEST_F(QuietTest, ThePromptIsOutBefore) {
    launch();
    fakes.userNotificationCenter.isSilent = true;
    fixEverything();
    EXPECT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_FALSE(isHeld());
    fakes.mainQueue.advance(1);
    EXPECT_TRUE(isHeld());
    EXPECT_EQ(view().notificationsStatus(), "ok");
}

TEST_F(QuietTest, ThePromptDoesNotOutliveWhatItIsAbout) {
    launch();
    fixEverything();
    EXPECT_THAT(fakes.userNotificationCenter.delivered, SizeIs(1));
    pressShortcut();
    EXPECT_THAT(fakes.userNotificationCenter.delivered, IsEmpty());
}

TEST_F(QuietTest, NobodyIsAskedForWhatIsOnAlready) {
    fakes.doNotDisturb.turn(true);
    launch();
    fixEverything();
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty());
    EXPECT_EQ(view().notificationsStatus(), "ok");
}

TEST_F(QuietTest, NobodyIsAskedOnceMoreForWhatIsHeld) {
    launch();
    fixEverything();
    fixEverything();
    EXPECT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
}

TEST_F(QuietTest, WhereItIsNotKnownTheUserIsAskedAsEver) {
    fakes.doNotDisturb.turn(std::nullopt);
    launch();
    fixEverything();
    EXPECT_THAT(fakes.userNotificationCenter.added, SizeIs(1));
    EXPECT_EQ(view().notificationsStatus(), "warning");
}

TEST_F(QuietTest, TheOpenPopoverFollowsTheDesktop) {
    launch();
    click();
    EXPECT_EQ(view().notificationsStatus(), "warning");
    fakes.doNotDisturb.turn(true);
    EXPECT_EQ(view().notificationsStatus(), "ok");
    fakes.doNotDisturb.turn(false);
    EXPECT_EQ(view().notificationsStatus(), "warning");
}

struct EndNoticeTest : QuietTest {
    void SetUp() override {
        QuietTest::SetUp();
        launch();
        share(true);
        ASSERT_TRUE(isHeld());
        fakes.userNotificationCenter.added.clear();
    }

    void end() { delegate->privacyRequested(Curtain::AppDelegate::PrivacyRequest::off); }
    auto& posted() { return fakes.userNotificationCenter.added; }
};

TEST_F(EndNoticeTest, WaitsUntilItCanBeSeen) {
    end();
    while (isHeld()) {
        ASSERT_THAT(posted(), IsEmpty());
        fakes.mainQueue.advance(0.1);
    }
    fakes.mainQueue.advance(longTime);
    EXPECT_THAT(posted(), SizeIs(1));
}

TEST_F(EndNoticeTest, ComesAtOnceWhereNothingIsHeld) {
    fakes.doNotDisturb.turn(false);
    end();
    EXPECT_THAT(posted(), SizeIs(1));
    fakes.mainQueue.advance(longTime);
    EXPECT_THAT(posted(), SizeIs(1));
}

TEST_F(EndNoticeTest, StaysAwayWhenPrivacyModeIsOnAgain) {
    end();
    pressShortcut();
    fakes.mainQueue.advance(longTime);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(EndNoticeTest, StaysAwayWhenItsUserEndsItMeanwhile) {
    end();
    pressShortcut();
    pressShortcut();
    fakes.mainQueue.advance(longTime);
    EXPECT_THAT(posted(), IsEmpty());
}

TEST_F(QuietTest, WhatARunThatWasKilledHeldIsGivenBackAfterTheStart) {
    fakes.doNotDisturb.leaveHeld();
    launch();
    fakes.mainQueue.advance(3.9);
    EXPECT_TRUE(isHeld());
    fakes.mainQueue.advance(0.2);
    EXPECT_FALSE(isHeld());
    EXPECT_EQ(fakes.doNotDisturb.isOn(), false);
}

} // namespace
