#include "platform/linux/workspace/LinuxWorkspace.h"

#include "platform/linux/windows/ListedWindowSystem.h"
#include "platform/linux/windows/NoWindowSystem.h"
#include "platform/linux/windows/StandInWindowSystem.h"
#include "platform/linux/workspace/InterfaceLevel.h"
#include "tests/platform/workspace/WorkspaceContract.h"
#include "tests/support/FakeWindowSystem.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <array>
#include <memory>
#include <utility>

#include <unistd.h>

namespace {

using LinuxPlatform::WindowEvent;
using Platform::ActivationPolicy;
using Platform::RunningApplication;
using Platform::WorkspaceNotification;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::FakeWindowSystem;

struct LinuxWorkspaceTest : testing::Test {
    FakeWindowSystem windows;
    LinuxPlatform::DesktopEntries entries{{}};
    LinuxPlatform::AppIdentity identity{entries, LinuxPlatform::ProcessTable("/nonexistent")};
    TestSupport::HandDrivenQueue mainQueue;
    LinuxPlatform::ScopedApps scopedApps{entries, mainQueue, LinuxPlatform::ProcessTable("/nonexistent")};
    std::unique_ptr<LinuxPlatform::LinuxWorkspace> workspace =
        std::make_unique<LinuxPlatform::LinuxWorkspace>(windows, identity, entries, scopedApps, mainQueue);

    std::shared_ptr<Platform::RunningApplication> only(const std::string& bundleID) {
        const auto instances = workspace->runningApplicationsWithBundleIdentifier(bundleID);
        EXPECT_THAT(instances, SizeIs(1));
        return instances.at(0);
    }

    /// It has one window, with the identifier 1.
    std::shared_ptr<RunningApplication> appThatIsAskedInVainToComeBack() {
        windows.open(1, "a", 10);
        auto app = only("a");
        app->hide();
        windows.takesEffect = false;
        app->unhide();
        return app;
    }

    /// Two windows of an app, the second of which its user had put away before.
    void hideOneOfTwo(std::uint32_t secondProcess) {
        windows.open(1, "a", 10);
        windows.open(2, "a", secondProcess).isHidden = true;
        ask("a", &RunningApplication::hide);
    }

    /// As privacy mode asks: every instance, in the order in which they are listed.
    void ask(const std::string& bundleID, void (RunningApplication::*request)()) {
        for (const auto& instance : workspace->runningApplicationsWithBundleIdentifier(bundleID)) {
            (*instance.*request)();
        }
    }

    std::vector<std::string> identifiers() {
        std::vector<std::string> result;
        for (const auto& application : workspace->runningApplications()) {
            result.push_back(application->bundleIdentifier().value());
        }
        return result;
    }
};

TEST_F(LinuxWorkspaceTest, NoWindowsNoApps) {
    EXPECT_THAT(workspace->runningApplications(), IsEmpty());
    EXPECT_THAT(workspace->runningApplicationsWithBundleIdentifier("a"), IsEmpty());
}

TEST_F(LinuxWorkspaceTest, OneInstanceForEachProcess) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10);
    windows.open(3, "a", 11);
    windows.open(4, "b", 12);
    EXPECT_THAT(identifiers(), ElementsAre("a", "a", "b"));
    EXPECT_THAT(workspace->runningApplicationsWithBundleIdentifier("a"), SizeIs(2));
}

TEST_F(LinuxWorkspaceTest, ConnectionsStandInForUnknownProcesses) {
    for (const LinuxPlatform::WindowId id : {1U, 2U, 3U}) {
        auto& window = windows.open(id, "a", 0);
        window.hints.process.reset();
        window.client = id == 3 ? 200 : 100;
    }
    EXPECT_THAT(workspace->runningApplicationsWithBundleIdentifier("a"), SizeIs(2));
}

TEST_F(LinuxWorkspaceTest, WindowsOfOneProcessFollowTheirOwnApps) {
    windows.open(1, "browser", 10);
    windows.open(2, "webapp", 10);
    only("webapp")->hide();
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(2)));
    EXPECT_FALSE(only("browser")->isHidden());
}

TEST_F(LinuxWorkspaceTest, WindowThatTellsNothingBelongsToNoApp) {
    windows.open(1, "", 10);
    EXPECT_THAT(workspace->runningApplications(), IsEmpty());
}

TEST_F(LinuxWorkspaceTest, InterfaceLevelSaysWhetherWindowsCanBeHiddenNow) {
    LinuxPlatform::InterfaceLevel level(windows);
    EXPECT_EQ(level.majorVersion(), 14);
    EXPECT_EQ(level.hidingObstacle(), std::nullopt);
    windows.obstacle = Platform::HidingObstacle::nextSessionNeeded;
    EXPECT_EQ(level.majorVersion(), 0);
    EXPECT_EQ(level.hidingObstacle(), Platform::HidingObstacle::nextSessionNeeded);
    level.switchExtensionOn();
    EXPECT_TRUE(windows.wasSwitchedOn);
    windows.obstacle.reset();
    EXPECT_EQ(level.majorVersion(), 14);
}

TEST_F(LinuxWorkspaceTest, WithoutAWindowSystemNothingCanBeHidden) {
    LinuxPlatform::NoWindowSystem none(Platform::HidingObstacle::waylandSession);
    LinuxPlatform::InterfaceLevel level(none);
    EXPECT_EQ(level.majorVersion(), 0);
    EXPECT_EQ(level.hidingObstacle(), Platform::HidingObstacle::waylandSession);
    EXPECT_EQ(LinuxPlatform::NoWindowSystem(Platform::HidingObstacle::noWindowManager).hidingObstacle(),
              Platform::HidingObstacle::noWindowManager);
    EXPECT_FALSE(none.knowsEveryWindow());
}

TEST(ListedWindowSystemTest, ListsWindowsAndLeavesThemAlone) {
    for (const bool isWholeSession : {false, true}) {
        auto fake = std::make_unique<TestSupport::FakeWindowSystem>();
        auto& windows = *fake;
        windows.open(1, "a", 10);
        LinuxPlatform::ListedWindowSystem listed(
            std::move(fake), Platform::HidingObstacle::windowManagerIgnoresHiding, isWholeSession);
        EXPECT_EQ(listed.hidingObstacle(), Platform::HidingObstacle::windowManagerIgnoresHiding);
        EXPECT_EQ(listed.knowsEveryWindow(), isWholeSession);
        EXPECT_EQ(listed.windows().size(), 1U);
        EXPECT_TRUE(listed.exists(1));
        EXPECT_FALSE(listed.exists(2));
        const auto before = listed.generation();
        const std::array<LinuxPlatform::WindowId, 1> all{1};
        listed.hide(all);
        listed.show(all);
        listed.activate(all);
        EXPECT_EQ(listed.generation(), before);
        EXPECT_FALSE(windows.at(1).isHidden);
        EXPECT_TRUE(windows.hidden.empty() && windows.shown.empty() && windows.activated.empty());
        windows.open(2, "b", 11);
        EXPECT_NE(listed.generation(), before);
        EXPECT_EQ(listed.windows().size(), 2U);
    }
}

TEST(StandInWindowSystemTest, ListsOtherWindowsUntilTheSessionsOwnCanBeReached) {
    using LinuxPlatform::WindowEvent;
    using LinuxPlatform::WindowId;
    auto own = std::make_unique<TestSupport::FakeWindowSystem>();
    auto other = std::make_unique<TestSupport::FakeWindowSystem>();
    auto& windows = *own;
    auto& standIn = *other;
    windows.everyWindowIsKnown = false;
    windows.obstacle = Platform::HidingObstacle::extensionOff;
    standIn.open(7, "a", 10);
    standIn.everyWindowIsKnown = false;
    LinuxPlatform::StandInWindowSystem system(std::move(own), std::move(other));
    std::vector<WindowId> told;
    auto subscription = system.addEventHandler(
        [&](WindowEvent, const LinuxPlatform::Window& window) { told.push_back(window.id); });
    EXPECT_EQ(system.hidingObstacle(), Platform::HidingObstacle::extensionOff);
    EXPECT_FALSE(system.knowsEveryWindow());
    EXPECT_TRUE(system.exists(7));
    EXPECT_EQ(system.windows().size(), 1U);
    standIn.send(WindowEvent::opened, 7);
    EXPECT_THAT(told, ElementsAre(7));

    const auto before = system.generation();
    EXPECT_EQ(system.generation(), before);
    windows.everyWindowIsKnown = true;
    windows.obstacle.reset();
    windows.open(1, "b", 11);
    windows.open(2, "c", 12);
    windows.toBeShown = {2};
    EXPECT_TRUE(system.isShowAwaited(2));
    EXPECT_NE(system.generation(), before);
    EXPECT_EQ(system.hidingObstacle(), std::nullopt);
    EXPECT_TRUE(system.knowsEveryWindow());
    EXPECT_FALSE(system.exists(7));
    EXPECT_EQ(system.windows().size(), 2U);
    standIn.send(WindowEvent::opened, 7);
    windows.send(WindowEvent::opened, 2);
    EXPECT_THAT(told, ElementsAre(7, 2));
    system.hide(std::array<WindowId, 1>{2});
    EXPECT_TRUE(windows.at(2).isHidden);
    EXPECT_TRUE(standIn.hidden.empty());
    subscription = {};
    windows.send(WindowEvent::opened, 1);
    EXPECT_THAT(told, ElementsAre(7, 2));
}

TEST_F(LinuxWorkspaceTest, InstancesWithAVisibleWindowComeFirst) {
    windows.open(1, "a", 10).isHidden = true;
    windows.open(2, "a", 11);
    EXPECT_FALSE(workspace->runningApplicationsWithBundleIdentifier("a").at(0)->isHidden());
    EXPECT_TRUE(workspace->runningApplicationsWithBundleIdentifier("a").at(1)->isHidden());
}

TEST_F(LinuxWorkspaceTest, InstanceIsHiddenWhenNoneOfItsWindowsCanBeSeen) {
    windows.open(1, "a", 10).isHidden = true;
    windows.open(2, "a", 10);
    EXPECT_FALSE(only("a")->isHidden());
    windows.at(2).isHidden = true;
    EXPECT_TRUE(only("a")->isHidden());
}

TEST_F(LinuxWorkspaceTest, RegularAppsHaveAWindowInTheTaskList) {
    windows.open(1, "a", 10).isInTaskList = false;
    windows.open(2, "b", 11).isInTaskList = false;
    windows.open(3, "b", 11);
    EXPECT_EQ(only("a")->activationPolicy(), ActivationPolicy::accessory);
    EXPECT_EQ(only("b")->activationPolicy(), ActivationPolicy::regular);
}

TEST_F(LinuxWorkspaceTest, ThisProgramIsAnAccessoryWhateverItShows) {
    windows.open(1, "a", static_cast<std::uint32_t>(getpid()));
    windows.open(2, "b", 10);
    EXPECT_EQ(only("a")->activationPolicy(), ActivationPolicy::accessory);
    EXPECT_EQ(only("b")->activationPolicy(), ActivationPolicy::regular);
}

TEST_F(LinuxWorkspaceTest, TheAppThatIsThisProgramIsNeitherListedNorAnnounced) {
    windows.open(1, "a", 10);
    windows.open(2, "b", 11);
    workspace = std::make_unique<LinuxPlatform::LinuxWorkspace>(windows, identity, entries, scopedApps,
                                                                mainQueue, "a");
    EXPECT_THAT(identifiers(), ElementsAre("b"));
    EXPECT_THAT(workspace->runningApplicationsWithBundleIdentifier("a"), IsEmpty());
    EXPECT_THAT(workspace->windowsOf("a"), IsEmpty());
    EXPECT_EQ(workspace->appOf(1), std::nullopt);
    EXPECT_EQ(workspace->appOf(2), "b");
    std::vector<std::string> announced;
    const auto observer = workspace->addObserver(
        Platform::WorkspaceNotification::didActivateApplication,
        [&](const auto& application) { announced.push_back(*application->bundleIdentifier()); });
    windows.send(LinuxPlatform::WindowEvent::activated, 1);
    windows.send(LinuxPlatform::WindowEvent::activated, 2);
    workspace->announceVisible();
    EXPECT_THAT(announced, ElementsAre("b", "b"));
}

TEST_F(LinuxWorkspaceTest, HidingAndShowingGivesBackExactlyWhatWasTaken) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    windows.open(3, "a", 10);
    const auto app = only("a");
    app->hide();
    EXPECT_TRUE(app->isHidden());
    app->unhide();
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(1, 3)));
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1, 3)));
    EXPECT_TRUE(windows.at(2).isHidden);
}

TEST_F(LinuxWorkspaceTest, ShowingWithoutHavingTakenAnythingShowsAll) {
    windows.open(1, "a", 10).isHidden = true;
    windows.open(2, "a", 10).isHidden = true;
    only("a")->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1, 2)));
}

TEST_F(LinuxWorkspaceTest, InstanceThatItsUserHadPutAwayStaysAwayWhenAnotherComesBack) {
    windows.open(1, "a", 10).isHidden = true;
    windows.open(2, "a", 11);
    windows.open(3, "a", 12).isHidden = true;
    ask("a", &RunningApplication::hide);
    ask("a", &RunningApplication::unhide);
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(2), IsEmpty(), IsEmpty()));
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(2)));
    EXPECT_TRUE(windows.at(1).isHidden);
    EXPECT_TRUE(windows.at(3).isHidden);
}

TEST_F(LinuxWorkspaceTest, WindowThatItsUserHadPutAwayStaysAwayWhenTheTakenOneIsClosed) {
    hideOneOfTwo(10);
    windows.close(1);
    ask("a", &RunningApplication::unhide);
    EXPECT_THAT(windows.shown, IsEmpty());
}

TEST_F(LinuxWorkspaceTest, InstanceThatItsUserHadPutAwayStaysAwayWhenTheTakenOneHasEnded) {
    hideOneOfTwo(11);
    windows.close(1);
    ask("a", &RunningApplication::unhide);
    EXPECT_THAT(windows.shown, IsEmpty());
}

TEST_F(LinuxWorkspaceTest, WhatItsUserHadPutAwayComesWhenTheAppIsAskedForOnceMore) {
    hideOneOfTwo(11);
    ask("a", &RunningApplication::unhide);
    windows.at(1).isHidden = true;
    ask("a", &RunningApplication::unhide);
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(1), ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, AppOfWhichNothingWasTakenComesBackWhole) {
    windows.open(1, "a", 10).isHidden = true;
    windows.open(2, "a", 11).isHidden = true;
    ask("a", &RunningApplication::hide);
    ask("a", &RunningApplication::unhide);
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, WindowThatWasPutAwayIsTakenLikeOthersOnceItsUserBroughtItBack) {
    hideOneOfTwo(11);
    windows.at(2).isHidden = false;
    ask("a", &RunningApplication::hide);
    ask("a", &RunningApplication::unhide);
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, HidingAgainAddsToWhatWasTaken) {
    windows.open(1, "a", 10);
    const auto app = only("a");
    app->hide();
    windows.open(2, "a", 10);
    app->hide();
    app->hide();
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1, 2)));
}

TEST_F(LinuxWorkspaceTest, WhatWasGivenBackIsForgotten) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10);
    const auto app = only("a");
    app->hide();
    app->unhide();
    EXPECT_FALSE(app->isHidden());
    windows.at(1).isHidden = true;
    app->hide();
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1, 2), ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, WhatItsUserBroughtBackIsForgotten) {
    windows.open(1, "a", 10);
    const auto app = only("a");
    app->hide();
    EXPECT_TRUE(app->isHidden());
    windows.at(1).isHidden = false;
    EXPECT_FALSE(app->isHidden());
    windows.at(1).isHidden = true;
    windows.open(2, "a", 10);
    app->hide();
    app->unhide();
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(1), ElementsAre(2)));
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, WindowThatIsSlowToHideIsNotForgotten) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    const auto app = only("a");
    windows.takesEffect = false;
    app->hide();
    EXPECT_FALSE(app->isHidden());
    windows.at(1).isHidden = true;
    EXPECT_TRUE(app->isHidden());
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1)));
}

TEST_F(LinuxWorkspaceTest, LateAnswersToEarlierRequestsAreNotTakenForTheUser) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    const auto app = only("a");
    windows.takesEffect = false;
    app->hide();
    app->unhide();
    app->hide();
    for (const bool isHidden : {true, false, true}) {
        windows.at(1).isHidden = isHidden;
        EXPECT_EQ(app->isHidden(), isHidden);
    }
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(1)));
}

TEST_F(LinuxWorkspaceTest, WindowThatIsHiddenAgainOnItsWayBackIsNotForgotten) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    const auto app = only("a");
    app->hide();
    EXPECT_TRUE(app->isHidden());
    windows.takesEffect = false;
    app->unhide();
    app->hide();
    for (const bool isHidden : {true, false, true}) {
        windows.at(1).isHidden = isHidden;
        EXPECT_EQ(app->isHidden(), isHidden);
    }
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(1)));
}

TEST_F(LinuxWorkspaceTest, WindowThatGoesOnlyAfterItWasAskedBackIsNotTakenForOneThatItsUserPutAway) {
    windows.open(1, "a", 10);
    const auto app = only("a");
    windows.takesEffect = false;
    app->hide();
    app->unhide();
    windows.toBeShown = {1};
    windows.at(1);
    EXPECT_FALSE(app->isHidden());
    windows.at(1).isHidden = true;
    EXPECT_FALSE(app->isHidden());
    app->hide();
    windows.toBeShown.clear();
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(1)));
}

TEST_F(LinuxWorkspaceTest, WindowIdentifierThatIsUsedAgainIsAnotherWindow) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10);
    const auto app = only("a");
    app->hide();
    windows.close(1);
    app->hide();
    windows.open(1, "a", 10).isHidden = true;
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, WindowIdentifierThatIsUsedAgainBeforeAnybodyAsksIsAnotherWindow) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10);
    const auto app = only("a");
    app->hide();
    windows.close(1);
    windows.open(1, "a", 10).isHidden = true;
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, WindowThatWasOnItsWayBackIsNotTakenForTheNextOneWithItsIdentifier) {
    const auto app = appThatIsAskedInVainToComeBack();
    windows.close(1);
    windows.open(1, "a", 10).isHidden = true;
    EXPECT_TRUE(app->isHidden());
}

TEST_F(LinuxWorkspaceTest, WindowThatDoesNotComeBackCountsAsHiddenAfterAWhile) {
    const auto app = appThatIsAskedInVainToComeBack();
    mainQueue.advance(4.9);
    EXPECT_FALSE(app->isHidden());
    mainQueue.advance(0.2);
    EXPECT_TRUE(app->isHidden());
}

TEST_F(LinuxWorkspaceTest, WindowWhoseTurnToBeShownHasNotComeIsHiddenAgainHoweverLate) {
    windows.toBeShown = {1};
    const auto app = appThatIsAskedInVainToComeBack();
    mainQueue.advance(30);
    EXPECT_FALSE(app->isHidden());
    app->hide();
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(1), ElementsAre(1)));
    windows.toBeShown.clear();
    EXPECT_TRUE(app->isHidden());
}

TEST_F(LinuxWorkspaceTest, WindowThatDoesNotComeBackWhenItsTurnHasComeCountsAsHiddenAfterAWhile) {
    windows.toBeShown = {1};
    const auto app = appThatIsAskedInVainToComeBack();
    mainQueue.advance(30);
    EXPECT_FALSE(app->isHidden());
    windows.toBeShown.clear();
    mainQueue.advance(4.9);
    EXPECT_FALSE(app->isHidden());
    mainQueue.advance(0.2);
    EXPECT_TRUE(app->isHidden());
}

TEST_F(LinuxWorkspaceTest, WhatItsUserBringsBackLongAfterHastyRequestsIsForgotten) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    const auto app = only("a");
    windows.takesEffect = false;
    app->hide();
    app->unhide();
    app->hide();
    windows.at(1).isHidden = true;
    EXPECT_TRUE(app->isHidden());
    mainQueue.advance(5);
    windows.at(1).isHidden = false;
    EXPECT_FALSE(app->isHidden());
    windows.at(1).isHidden = true;
    windows.open(3, "a", 10);
    app->hide();
    windows.shown.clear();
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(3)));
}

TEST_F(LinuxWorkspaceTest, TakenWindowsAreRememberedWhileTheWindowManagerIsAway) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10);
    only("a")->hide();
    const auto list = windows.list;
    windows.close(1);
    windows.close(2);
    windows.unmanaged = {1, 2};
    EXPECT_THAT(workspace->runningApplications(), IsEmpty());
    windows.open(9, "z", 99);
    only("z")->hide();
    for (const auto& window : list) {
        windows.open(window.id, "a", 10).isHidden = true;
    }
    only("a")->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1, 2)));
}

TEST_F(LinuxWorkspaceTest, ActivationLeavesAloneWhatItsUserPutAway) {
    windows.open(1, "a", 10).isHidden = true;
    windows.open(2, "a", 10);
    windows.open(3, "a", 10);
    const auto app = only("a");
    app->hide();
    app->unhide();
    EXPECT_FALSE(app->isHidden());
    windows.at(3).isHidden = true;
    app->activate(Platform::ActivationOptions::ignoringOtherApps);
    EXPECT_THAT(windows.activated, ElementsAre(ElementsAre(2)));
}

TEST_F(LinuxWorkspaceTest, ActivationCountsOnWindowsThatAreOnTheirWayBack) {
    const auto app = appThatIsAskedInVainToComeBack();
    app->activate(Platform::ActivationOptions::ignoringOtherApps);
    EXPECT_THAT(windows.activated, ElementsAre(ElementsAre(1)));
}

TEST_F(LinuxWorkspaceTest, WindowsOnTheirWayBackAreVisibleAndCanBeHiddenAgain) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    const auto app = only("a");
    app->hide();
    windows.takesEffect = false;
    app->unhide();
    EXPECT_FALSE(app->isHidden());
    app->hide();
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(1), ElementsAre(1)));
    EXPECT_TRUE(app->isHidden());
    app->unhide();
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(1)));
}

TEST_F(LinuxWorkspaceTest, IdentityFollowsAWindowThatChanges) {
    windows.open(1, "loader", 10);
    EXPECT_THAT(identifiers(), ElementsAre("loader"));
    windows.at(1).hints.className = "player";
    EXPECT_THAT(identifiers(), ElementsAre("player"));
}

TEST_F(LinuxWorkspaceTest, WindowEventsBecomeNotifications) {
    windows.open(1, "a", 10);
    std::vector<std::string> seen;
    const auto launched =
        workspace->addObserver(WorkspaceNotification::didLaunchApplication, [&](const auto& app) {
            seen.push_back("launched " + *app->bundleIdentifier());
        });
    const auto activated =
        workspace->addObserver(WorkspaceNotification::didActivateApplication, [&](const auto& app) {
            seen.push_back("activated " + *app->bundleIdentifier());
        });
    windows.send(WindowEvent::opened, 1);
    windows.send(WindowEvent::activated, 1);
    EXPECT_THAT(seen, ElementsAre("launched a", "activated a"));
}

TEST_F(LinuxWorkspaceTest, AppsThatCanBeSeenAreAnnouncedOnceMoreWhenAsked) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    windows.open(3, "b", 11).isHidden = true;
    windows.open(4, "c", 12);
    std::vector<std::string> seen;
    const auto activated =
        workspace->addObserver(WorkspaceNotification::didActivateApplication, [&](const auto& app) {
            seen.push_back(*app->bundleIdentifier());
            app->hide();
        });
    workspace->announceVisible();
    EXPECT_THAT(seen, ElementsAre("a", "c"));
    workspace->announceVisible();
    EXPECT_THAT(seen, ElementsAre("a", "c")) << "now they are hidden";
}

TEST_F(LinuxWorkspaceTest, EndedObserversHearNothing) {
    windows.open(1, "a", 10);
    int count = 0;
    {
        const auto observer = workspace->addObserver(WorkspaceNotification::didLaunchApplication,
                                                     [&](const auto&) { ++count; });
    }
    windows.send(WindowEvent::opened, 1);
    EXPECT_EQ(count, 0);
}

TEST_F(LinuxWorkspaceTest, HandleOfAnAppThatQuitIsHarmless) {
    windows.open(1, "a", 10);
    const auto app = only("a");
    windows.close(1);
    EXPECT_TRUE(app->isHidden());
    EXPECT_EQ(app->localizedName(), std::nullopt);
    EXPECT_EQ(app->activationPolicy(), ActivationPolicy::prohibited);
    app->hide();
    app->unhide();
    app->activate(Platform::ActivationOptions::none);
    EXPECT_THAT(windows.hidden, IsEmpty());
    EXPECT_THAT(windows.shown, IsEmpty());
}

TEST_F(LinuxWorkspaceTest, HandleOutlivesTheWorkspace) {
    windows.open(1, "a", 10);
    const auto app = only("a");
    workspace.reset();
    app->hide();
    EXPECT_TRUE(app->isHidden());
    EXPECT_THAT(windows.hidden, IsEmpty());
}

/// Apps of one window each.
struct LinuxAppsWorld {
    FakeWindowSystem windows;
    LinuxPlatform::DesktopEntries entries{{}};
    LinuxPlatform::AppIdentity identity{entries, LinuxPlatform::ProcessTable("/nonexistent")};
    TestSupport::HandDrivenQueue mainQueue;
    LinuxPlatform::ScopedApps scopedApps{entries, mainQueue, LinuxPlatform::ProcessTable("/nonexistent")};
    LinuxPlatform::LinuxWorkspace workspace{windows, identity, entries, scopedApps, mainQueue};
    std::uint32_t lastProcess = 0;

    void run(const std::string& bundleID) {
        ++lastProcess;
        windows.open(lastProcess, bundleID, lastProcess);
    }
    void quitAll() {
        while (!windows.list.empty()) {
            windows.close(windows.list.front().id);
        }
    }
    void tell(WorkspaceNotification notification) {
        windows.send(notification == WorkspaceNotification::didLaunchApplication ? WindowEvent::opened
                                                                                 : WindowEvent::activated,
                     windows.list.front().id);
    }
};

} // namespace

namespace TestSupport {

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, WorkspaceContract, LinuxAppsWorld);

} // namespace TestSupport
