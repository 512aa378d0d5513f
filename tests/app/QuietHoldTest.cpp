#include "Curtain/QuietHold.h"

#include "tests/support/FakeDoNotDisturb.h"
#include "tests/support/FakeScreenWatcherProbe.h"
#include "tests/support/FakeUserNotificationCenter.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace {

/// A desktop that keeps notices from the screen, and an application that is in want of it.
struct World {
    std::vector<std::string> events;
    TestSupport::HandDrivenQueue queue;
    TestSupport::FakeDoNotDisturb doNotDisturb{events};
    TestSupport::FakeUserNotificationCenter center;
    TestSupport::FakeScreenWatcherProbe probe;
    Curtain::ScreenWatcher screenWatcher{probe};
    std::unique_ptr<Curtain::QuietHold> hold =
        std::make_unique<Curtain::QuietHold>(doNotDisturb, center, screenWatcher, queue);

    World() {
        probe.isWatched = false;
        doNotDisturb.turn(false);
    }
};

using Step = std::function<void(World&)>;

Step begin() {
    return [](World& world) { world.hold->begin(); };
}

Step end() {
    return [](World& world) { world.hold->end(); };
}

Step after(double seconds) {
    return [=](World& world) { world.queue.advance(seconds); };
}

Step share(std::optional<bool> isShared) {
    return [=](World& world) { world.probe.isWatched = isShared; };
}

Step userTurns(std::optional<bool> isOn) {
    return [=](World& world) { world.doNotDisturb.turn(isOn); };
}

Step quit() {
    return [](World& world) { world.hold.reset(); };
}

Step leftByAnEarlierRun() {
    return [](World& world) { world.doNotDisturb.leaveHeld(); };
}

/// A server that shows afterwards what it held.
Step pours() {
    return [](World& world) { world.doNotDisturb.does.showsHeldAfterwards = true; };
}

Step answersNothing() {
    return [](World& world) { world.center.isSilent = true; };
}

struct Rule {
    const char* name;
    std::vector<Step> steps;
    std::optional<bool> isOn;
    bool isHeld;

    friend void PrintTo(const Rule& rule, std::ostream* out) { *out << rule.name; }
};

class QuietHoldTest : public testing::TestWithParam<Rule> {};

TEST_P(QuietHoldTest, FollowsTheRule) {
    World world;
    for (const auto& step : GetParam().steps) {
        step(world);
    }
    EXPECT_EQ(world.doNotDisturb.isOn(), GetParam().isOn);
    EXPECT_EQ(world.doNotDisturb.isHeld(), GetParam().isHeld);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, QuietHoldTest,
    testing::Values(
        Rule{"HeldAtOnceWhenNoNoticeIsOnItsWay", {begin()}, true, true},
        Rule{"NotBeforeTheNoticesAreOut", {answersNothing(), begin(), after(0.9)}, false, false},
        Rule{"NoticesThatNeverGetOutDoNotKeepItUp", {answersNothing(), begin(), after(1.1)}, true, true},
        Rule{"NotAfterAllWhenItEndsMeanwhile",
             {answersNothing(), begin(), after(0.5), end(), after(10)},
             false,
             false},
        Rule{"NotKnown", {userTurns(std::nullopt), begin(), end(), after(10)}, std::nullopt, false},

        Rule{"HeldForFourSecondsMore", {begin(), end(), after(3.9)}, true, true},
        Rule{"GivenBackAfterFourSeconds", {begin(), end(), after(4.1)}, false, false},
        Rule{"ASecondShareKeepsIt", {begin(), end(), after(3), begin(), after(100)}, true, true},
        Rule{"TheEndOfASecondShareGivesItBack",
             {begin(), end(), after(3), begin(), after(100), end(), after(4.1)},
             false,
             false},
        Rule{"EndedTwiceTheLastOneCounts", {begin(), end(), after(3), end(), after(2)}, true, true},

        Rule{"OnBeforeItStaysOn", {userTurns(true), begin(), end(), after(10)}, true, false},
        Rule{"TurnedOffMeanwhileItStaysOff", {begin(), userTurns(false), after(10)}, false, false},
        Rule{"TurnedOffAndOnMeanwhileItStaysOn",
             {begin(), userTurns(false), userTurns(true), end(), after(10)},
             true,
             false},

        Rule{"AServerThatPoursIsLetGoWithoutAShare", {pours(), begin(), end(), after(4.1)}, false, false},
        Rule{"AServerThatPoursIsHeldAsLongAsTheShareLasts",
             {pours(), share(true), begin(), end(), after(1000)},
             true,
             true},
        Rule{"AServerThatPoursIsLetGoFourSecondsAfterTheShare",
             {pours(), share(true), begin(), end(), after(1000), share(false), after(4.1)},
             false,
             false},
        Rule{"AServerThatPoursIsHeldForFourSecondsAfterTheShare",
             {pours(), share(true), begin(), end(), after(1000), share(false), after(2.9)},
             true,
             true},
        Rule{"AShareThatFlickersIsNotOver",
             {pours(), share(true), begin(), end(), after(10), share(false), after(2), share(true), after(2),
              share(false), after(2.5)},
             true,
             true},
        Rule{"AShareOfWhichNobodyKnowsAnyMoreIsNotOver",
             {pours(), share(true), begin(), share(std::nullopt), end(), after(1000)},
             true,
             true},
        Rule{"AShareOfWhichNobodyEverKnewIsNone",
             {pours(), share(std::nullopt), begin(), end(), after(4.1)},
             false,
             false},
        Rule{"AServerThatPoursNothingIsLetGoDuringAShare",
             {share(true), begin(), end(), after(4.1)},
             false,
             false},

        Rule{"TheEndOfTheProgramGivesItBack", {begin(), quit()}, false, false},
        Rule{"TheEndOfTheProgramLeavesAServerThatPoursDuringAShare",
             {pours(), share(true), begin(), quit()},
             true,
             true},

        Rule{"WhatAnEarlierRunLeftIsGivenBack", {leftByAnEarlierRun(), end(), after(4.1)}, false, false},
        Rule{"WhatAnEarlierRunLeftIsTakenOver",
             {leftByAnEarlierRun(), end(), after(3), begin(), after(100)},
             true,
             true},
        Rule{"WhatAnEarlierRunLeftOfAServerThatPoursWaitsForTheShare",
             {pours(), share(true), leftByAnEarlierRun(), end(), after(1000)},
             true,
             true}),
    [](const auto& rule) { return std::string(rule.param.name); });

TEST(QuietHoldRestTest, TheScreenIsNotLookedAtWhereNothingIsHeld) {
    World world;
    world.doNotDisturb.does.showsHeldAfterwards = true;
    world.hold->end();
    world.queue.advance(1000);
    EXPECT_EQ(world.probe.queries, 0);
}

TEST(QuietHoldRestTest, TheScreenIsNotLookedAtForAServerThatPoursNothing) {
    World world;
    world.hold->begin();
    world.hold->end();
    world.queue.advance(1000);
    EXPECT_EQ(world.probe.queries, 0);
}

TEST(QuietHoldRestTest, NothingIsDoneOnceItIsGivenBack) {
    World world;
    world.doNotDisturb.does.showsHeldAfterwards = true;
    world.hold->begin();
    world.hold->end();
    world.queue.advance(10);
    ASSERT_FALSE(world.doNotDisturb.isHeld());
    const auto asked = world.probe.queries;
    const auto events = world.events;
    world.queue.advance(1000);
    EXPECT_EQ(world.probe.queries, asked);
    EXPECT_EQ(world.events, events);
}

} // namespace
