#include "Curtain/ReadinessCoordinator.h"

#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gmock/gmock.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace {

using Curtain::ProviderReadiness;
using CurtainCore::LocKey;
using CurtainCore::NotificationStatus;
using CurtainCore::ReadinessIssue;
using CurtainCore::ReadinessState;
using CurtainCore::ReadinessStatus;
using CurtainCore::RiskLevel;
using CurtainCore::TargetApp;
using testing::ElementsAre;
using testing::IsEmpty;

struct ReadinessCoordinatorTest : testing::Test {
    TestSupport::MemoryUserDefaults defaults;
    CurtainCore::PreferencesStore store{defaults};
    TestSupport::FakeWorkspace workspace;
    TestSupport::FakeProcessRunner runner;
    TestSupport::FakeInstallation files;
    TestSupport::FakeUserFolders folders;
    TestSupport::HandDrivenWorkQueues workQueues;
    TestSupport::HandDrivenQueue mainQueue;
    Curtain::DesktopController desktop{runner};
    Curtain::DesktopChecker checker{desktop, files, folders, workQueues, mainQueue};
    Curtain::ReadinessCoordinator coordinator{store, workspace, desktop, checker};
    std::vector<ReadinessState> published;

    ReadinessCoordinatorTest() {
        QObject::connect(&coordinator, &Curtain::ReadinessCoordinator::stateChanged,
                         [this] { published.push_back(coordinator.state()); });
    }

    void putOnDesktop(int count) {
        for (int number = 0; number < count; ++number) {
            files.addFile("/home/ada/Desktop/file " + std::to_string(number));
        }
    }

    void change(const std::function<void(CurtainCore::Preferences&)>& edit) {
        auto preferences = store.load();
        edit(preferences);
        store.save(preferences);
    }

    ReadinessState refreshed() {
        coordinator.refresh();
        return coordinator.state();
    }
};

TEST_F(ReadinessCoordinatorTest, NothingIsKnownAndNothingAskedBeforeTheFirstRefresh) {
    EXPECT_EQ(coordinator.state(), ReadinessState{});
    EXPECT_EQ(coordinator.state().desktop, ReadinessStatus::unknown);
    EXPECT_EQ(coordinator.state().privateApps, ReadinessStatus::unknown);
    EXPECT_EQ(coordinator.state().risk, RiskLevel::low);
    EXPECT_THAT(runner.runs, IsEmpty());
    EXPECT_THAT(published, IsEmpty());
    EXPECT_EQ(workspace.queries, 0);
}

TEST_F(ReadinessCoordinatorTest, WithoutProvidersTheMediaAreUnknownAndPrivacyModeIsOff) {
    const auto state = refreshed();
    EXPECT_EQ(state.camera, ReadinessStatus::unknown);
    EXPECT_EQ(state.microphone, ReadinessStatus::unknown);
    EXPECT_FALSE(state.privacyModeActive);
}

TEST_F(ReadinessCoordinatorTest, GathersEveryFact) {
    change([](auto& preferences) {
        preferences.targetApps = {{"a", "A"}, {"b", "B"}, {"c", "C"}, {"a", "A"}};
    });
    workspace.run("a");
    workspace.run("b").hidden = true;
    putOnDesktop(3);
    coordinator.cameraReadinessProvider = [] { return ProviderReadiness{true, true}; };
    coordinator.micReadinessProvider = [] { return ProviderReadiness{true, false}; };
    coordinator.isPrivacyModeActive = [] { return true; };
    const auto state = refreshed();
    EXPECT_EQ(state,
              CurtainCore::ReadinessChecklistEngine().build({.privateAppsVisible = 2,
                                                             .desktopFileCount = 3,
                                                             .notifications = NotificationStatus::mayAppear,
                                                             .cameraEvaluated = true,
                                                             .cameraOK = true,
                                                             .micEvaluated = true,
                                                             .micOK = false,
                                                             .privacyModeActive = true,
                                                             .desktopHidden = false}));
    EXPECT_EQ(state.desktopFileCount, 3);
    EXPECT_TRUE(state.privacyModeActive);
    EXPECT_EQ(state.privateApps, ReadinessStatus::danger);
}

/// What the user and the desktop say of notices, and how the row stands.
struct NoticesRule {
    bool isChecked;
    bool isMarked;
    std::optional<bool> isDoNotDisturbOn;
    ReadinessStatus row;
};

TEST_F(ReadinessCoordinatorTest, NoticesAreDealtWithWhereTheUserOrTheDesktopSaysSo) {
    using enum ReadinessStatus;
    const std::vector<NoticesRule> rules{
        {true, false, std::nullopt, warning}, {true, false, false, warning}, {true, false, true, ok},
        {true, true, std::nullopt, ok},       {true, true, false, ok},       {true, true, true, ok},
        {false, false, std::nullopt, ok},     {false, false, false, ok},     {false, true, false, ok},
    };
    for (const auto& rule : rules) {
        change([&](auto& preferences) {
            preferences.checkNotifications = rule.isChecked;
            preferences.notificationsMarkedHandled = rule.isMarked;
        });
        coordinator.isDoNotDisturbOn = [&] { return rule.isDoNotDisturbOn; };
        EXPECT_EQ(refreshed().notifications, rule.row)
            << rule.isChecked << rule.isMarked << rule.isDoNotDisturbOn.value_or(false);
    }
}

TEST_F(ReadinessCoordinatorTest, OneAnnouncementARefreshWithTheWholeNewState) {
    putOnDesktop(1);
    coordinator.refresh();
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published.back().desktopFileCount, 1);
    coordinator.refresh();
    EXPECT_EQ(published.size(), 2U);
}

TEST_F(ReadinessCoordinatorTest, ProvidersAreAskedInOrderOnceARefresh) {
    std::vector<std::string> calls;
    coordinator.cameraReadinessProvider = [&] { return calls.emplace_back("camera"), ProviderReadiness{}; };
    coordinator.micReadinessProvider = [&] { return calls.emplace_back("mic"), ProviderReadiness{}; };
    coordinator.isPrivacyModeActive = [&] { return calls.emplace_back("privacy mode"), false; };
    coordinator.refresh();
    EXPECT_THAT(calls, ElementsAre("camera", "mic", "privacy mode"));
}

TEST_F(ReadinessCoordinatorTest, DesktopFilesThatAreNotCheckedAreNotCounted) {
    change([](auto& preferences) { preferences.checkDesktopFiles = false; });
    putOnDesktop(3);
    runner.setting = "0\n";
    const auto state = refreshed();
    EXPECT_EQ(state.desktopFileCount, 0);
    EXPECT_EQ(state.desktop, ReadinessStatus::ok);
    EXPECT_TRUE(state.desktopHidden);
    EXPECT_THAT(files.listedFolders, IsEmpty());
    EXPECT_THAT(runner.runs, ElementsAre(TestSupport::FakeProcessRunner::readingIcons()));
}

TEST_F(ReadinessCoordinatorTest, OneReadOfTheSettingARefresh) {
    coordinator.refresh();
    EXPECT_THAT(runner.runs, ElementsAre(TestSupport::FakeProcessRunner::readingIcons()));
}

TEST_F(ReadinessCoordinatorTest, NotificationsThatAreNotCheckedOrAreHandledCountAsProtected) {
    EXPECT_EQ(refreshed().notifications, ReadinessStatus::warning);
    EXPECT_THAT(coordinator.state().issues,
                ElementsAre(ReadinessIssue(LocKey::notifications, ReadinessStatus::warning)));

    change([](auto& preferences) { preferences.checkNotifications = false; });
    EXPECT_EQ(refreshed().notifications, ReadinessStatus::ok);
    EXPECT_THAT(coordinator.state().issues, IsEmpty());

    change([](auto& preferences) {
        preferences.checkNotifications = true;
        preferences.notificationsMarkedHandled = true;
    });
    EXPECT_EQ(refreshed().notifications, ReadinessStatus::ok);
    EXPECT_THAT(coordinator.state().issues, IsEmpty());
}

TEST_F(ReadinessCoordinatorTest, PreferencesAreReadAfreshEachTime) {
    workspace.run("a");
    EXPECT_EQ(refreshed().privateApps, ReadinessStatus::ok);
    change([](auto& preferences) { preferences.targetApps = {{"a", "A"}}; });
    EXPECT_EQ(refreshed().privateApps, ReadinessStatus::danger);
}

TEST_F(ReadinessCoordinatorTest, TogglingAddsAtTheEndAndRemoves) {
    change([](auto& preferences) { preferences.targetApps = {{"a", "A"}, {"b", "B"}}; });
    coordinator.toggleTargetApp({"c", "C"});
    EXPECT_THAT(store.load().targetApps,
                ElementsAre(TargetApp{"a", "A"}, TargetApp{"b", "B"}, TargetApp{"c", "C"}));
    coordinator.toggleTargetApp({"a", "another name"});
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"b", "B"}, TargetApp{"c", "C"}));
}

TEST_F(ReadinessCoordinatorTest, TogglingTwiceMovesAPresentAppToTheEnd) {
    change([](auto& preferences) { preferences.targetApps = {{"a", "A"}, {"b", "B"}}; });
    coordinator.toggleTargetApp({"a", "A"});
    coordinator.toggleTargetApp({"a", "A"});
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"b", "B"}, TargetApp{"a", "A"}));
    coordinator.toggleTargetApp({"c", "C"});
    coordinator.toggleTargetApp({"c", "C"});
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"b", "B"}, TargetApp{"a", "A"}));
}

TEST_F(ReadinessCoordinatorTest, TogglingComparesExactlyAndRemovesOnlyTheFirst) {
    change([](auto& preferences) { preferences.targetApps = {{"A", "A"}, {"a", "first"}, {"a", "second"}}; });
    coordinator.toggleTargetApp({"a", "A"});
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"A", "A"}, TargetApp{"a", "second"}));
}

TEST_F(ReadinessCoordinatorTest, TogglingRefreshesOnceWithTheSavedPreferences) {
    workspace.run("a");
    coordinator.toggleTargetApp({"a", "A"});
    ASSERT_EQ(published.size(), 1U);
    EXPECT_EQ(published.back().privateApps, ReadinessStatus::danger);
}

TEST_F(ReadinessCoordinatorTest, TogglingKeepsTheOtherPreferences) {
    change([](auto& preferences) {
        preferences.hasOnboarded = true;
        preferences.selectedCameraID = "camera";
    });
    const auto before = store.load();
    coordinator.toggleTargetApp({"a", "A"});
    coordinator.toggleTargetApp({"a", "A"});
    EXPECT_EQ(store.load(), before);
}

TEST_F(ReadinessCoordinatorTest, AppsAreUnknownWhereNotEveryWindowIsKnown) {
    workspace.everyWindowIsKnown = false;
    EXPECT_EQ(refreshed().privateApps, ReadinessStatus::ok) << "there are none";
    change([](auto& preferences) { preferences.targetApps = {{"a", "A"}, {"b", "B"}}; });
    workspace.run("b").hidden = true;
    const auto state = refreshed();
    EXPECT_EQ(state.privateApps, ReadinessStatus::unknown);
    EXPECT_EQ(state.privateAppsUnknown, 2);
}

} // namespace
