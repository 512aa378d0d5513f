#include "Curtain/ShareMonitor.h"

#include "core/Preferences.h"
#include "tests/support/FakeScreenWatcherProbe.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using CurtainCore::DetectionConfidence;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeScreenWatcherProbe;
using TestSupport::FakeWorkspace;
using TestSupport::HandDrivenQueue;

TEST(ScreenWatcherTest, LooksTheSymbolUpOnceAndAsksEachTime) {
    FakeScreenWatcherProbe probe;
    const Curtain::ScreenWatcher watcher(probe);
    ASSERT_TRUE(watcher.fn);
    EXPECT_EQ(watcher.fn(), false);
    probe.isWatched = true;
    EXPECT_EQ(watcher.fn(), true);
    EXPECT_THAT(probe.lookUps, ElementsAre("CGSIsScreenWatcherPresent"));
}

TEST(ScreenWatcherTest, IsEmptyWithoutTheSymbol) {
    FakeScreenWatcherProbe probe;
    probe.isPresent = false;
    EXPECT_FALSE(Curtain::ScreenWatcher(probe).fn);
    EXPECT_FALSE(Curtain::ScreenWatcher(probe).isBlind()) << "there is nothing to lose";
}

TEST(ScreenWatcherTest, IsBlindWhileNobodyKnows) {
    FakeScreenWatcherProbe probe;
    const Curtain::ScreenWatcher watcher(probe);
    EXPECT_FALSE(watcher.isBlind());
    probe.isWatched = true;
    EXPECT_FALSE(watcher.isBlind());
    probe.isWatched = std::nullopt;
    EXPECT_TRUE(watcher.isBlind());
    EXPECT_EQ(probe.lookUps.size(), 1U);
}

struct ShareMonitorTest : testing::Test {
    FakeScreenWatcherProbe probe;
    FakeWorkspace workspace;
    HandDrivenQueue queue;
    std::vector<DetectionConfidence> reports;
    std::unique_ptr<Curtain::ShareMonitor> monitor;

    void SetUp() override { make({"call", "meeting"}); }

    void make(std::set<std::string> triggers) {
        monitor = std::make_unique<Curtain::ShareMonitor>(probe, workspace, queue);
        monitor->triggerBundleIDs = std::move(triggers);
        monitor->onConfidenceChanged = [this](auto confidence) { reports.push_back(confidence); };
    }

    std::vector<DetectionConfidence> reportsAfter(int ticks) {
        reports.clear();
        queue.advance(3.0 * ticks);
        return reports;
    }
};

TEST_F(ShareMonitorTest, LooksTheProbeUpWhenItIsMadeAndPollsNothing) {
    EXPECT_EQ(probe.lookUps.size(), 1U);
    queue.advance(30.0);
    EXPECT_EQ(probe.queries, 0);
    EXPECT_EQ(probe.lookUps.size(), 1U);
}

TEST_F(ShareMonitorTest, FirstLooksThreeSecondsAfterTheStart) {
    probe.isWatched = true;
    monitor->start();
    queue.advance(2.999);
    EXPECT_EQ(probe.queries, 0);
    EXPECT_THAT(reports, IsEmpty());
    queue.advance(0.001);
    EXPECT_EQ(probe.queries, 1);
    EXPECT_THAT(reports, ElementsAre(DetectionConfidence::high));
}

TEST_F(ShareMonitorTest, PollsEveryThreeSeconds) {
    monitor->start();
    queue.advance(30.5);
    EXPECT_EQ(probe.queries, 10);
}

TEST_F(ShareMonitorTest, LooksAtOnceWhenThereIsNewsAndThenEveryThreeSecondsAnew) {
    monitor->start();
    queue.advance(2.0);
    probe.isWatched = true;
    probe.newsObservers.tell();
    EXPECT_THAT(reports, ElementsAre(DetectionConfidence::high));
    EXPECT_EQ(probe.queries, 1);
    queue.advance(2.999);
    EXPECT_EQ(probe.queries, 1);
    queue.advance(0.001);
    EXPECT_EQ(probe.queries, 2);
    EXPECT_THAT(reports, ElementsAre(DetectionConfidence::high));
}

TEST_F(ShareMonitorTest, NewsBeforeTheStartIsNone) {
    probe.isWatched = true;
    probe.newsObservers.tell();
    EXPECT_EQ(probe.queries, 0);
}

TEST_F(ShareMonitorTest, ReportsNothingWhileNothingGoesOn) {
    workspace.run("editor");
    workspace.run(std::nullopt);
    monitor->start();
    EXPECT_THAT(reportsAfter(20), IsEmpty());
}

TEST_F(ShareMonitorTest, ReportsATriggerOnce) {
    monitor->start();
    EXPECT_THAT(reportsAfter(2), IsEmpty());
    workspace.run("call");
    EXPECT_THAT(reportsAfter(1), ElementsAre(DetectionConfidence::low));
    workspace.run("meeting");
    EXPECT_THAT(reportsAfter(20), IsEmpty());
}

TEST_F(ShareMonitorTest, FollowsACallFromItsStartToItsEnd) {
    monitor->start();
    workspace.run("call");
    EXPECT_THAT(reportsAfter(2), ElementsAre(DetectionConfidence::low));
    probe.isWatched = true;
    EXPECT_THAT(reportsAfter(1200), ElementsAre(DetectionConfidence::high));
    probe.isWatched = false;
    EXPECT_THAT(reportsAfter(2), ElementsAre(DetectionConfidence::low));
    workspace.quitAll();
    EXPECT_THAT(reportsAfter(2), ElementsAre(DetectionConfidence::none));
}

TEST_F(ShareMonitorTest, WhatNobodyKnowsChangesNothing) {
    monitor->start();
    probe.isWatched = std::nullopt;
    workspace.run("call");
    EXPECT_THAT(reportsAfter(3), IsEmpty());
    probe.isWatched = true;
    EXPECT_THAT(reportsAfter(1), ElementsAre(DetectionConfidence::high));
    probe.isWatched = std::nullopt;
    EXPECT_THAT(reportsAfter(20), IsEmpty());
    workspace.quitAll();
    EXPECT_THAT(reportsAfter(20), IsEmpty());
    probe.isWatched = true;
    EXPECT_THAT(reportsAfter(3), IsEmpty()) << "it was high all along";
    probe.isWatched = std::nullopt;
    EXPECT_THAT(reportsAfter(3), IsEmpty());
    probe.isWatched = false;
    EXPECT_THAT(reportsAfter(2), ElementsAre(DetectionConfidence::none));
}

TEST_F(ShareMonitorTest, ReportsACaptureWithoutAnyTrigger) {
    make({});
    probe.isWatched = true;
    monitor->start();
    EXPECT_THAT(reportsAfter(3), ElementsAre(DetectionConfidence::high));
}

TEST_F(ShareMonitorTest, WithoutAProbeTriggersStillCount) {
    probe.isPresent = false;
    probe.isWatched = true;
    make({"call"});
    monitor->start();
    EXPECT_THAT(reportsAfter(3), IsEmpty());
    workspace.run("call");
    EXPECT_THAT(reportsAfter(3), ElementsAre(DetectionConfidence::low));
    EXPECT_EQ(probe.queries, 0);
}

TEST_F(ShareMonitorTest, WithoutProbeAndTriggersNothingIsEverReported) {
    probe.isPresent = false;
    make({});
    workspace.run("call");
    monitor->start();
    EXPECT_THAT(reportsAfter(20), IsEmpty());
}

TEST_F(ShareMonitorTest, RemembersWhatItSawWithoutAHandler) {
    monitor->onConfidenceChanged = nullptr;
    probe.isWatched = true;
    monitor->start();
    EXPECT_THAT(reportsAfter(2), IsEmpty());
    monitor->onConfidenceChanged = [this](auto confidence) { reports.push_back(confidence); };
    EXPECT_THAT(reportsAfter(2), IsEmpty());
    probe.isWatched = false;
    EXPECT_THAT(reportsAfter(2), ElementsAre(DetectionConfidence::none));
}

TEST_F(ShareMonitorTest, DefaultTriggersAreCallAppsAndNoBrowser) {
    const auto& triggers = CurtainCore::Preferences::defaultTriggerBundleIDs;
    make({triggers.begin(), triggers.end()});
    monitor->start();
    workspace.run("com.google.Chrome");
    EXPECT_THAT(reportsAfter(2), IsEmpty());
    workspace.run("us.zoom.xos");
    EXPECT_THAT(reportsAfter(2), ElementsAre(DetectionConfidence::low));
}

TEST_F(ShareMonitorTest, NothingIsAskedOnceTheMonitorIsGone) {
    monitor->start();
    monitor.reset();
    queue.advance(30.0);
    EXPECT_EQ(probe.queries, 0);
}

} // namespace
