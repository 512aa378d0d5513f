#include "core/HideEngine.h"

#include "tests/support/RecordingAppHiding.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using CurtainCore::HideEngine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::RecordingAppHiding;

struct HideEngineTest : testing::Test {
    RecordingAppHiding apps;
    HideEngine engine{apps};
};

TEST_F(HideEngineTest, StartsInactive) {
    EXPECT_FALSE(engine.isActive());
    EXPECT_THAT(apps.calls, IsEmpty());
}

TEST_F(HideEngineTest, ActivatingWithNoTargetsIsActiveAndCallsNothing) {
    engine.activate({});
    EXPECT_TRUE(engine.isActive());
    EXPECT_THAT(apps.calls, IsEmpty());
}

TEST_F(HideEngineTest, ActivatingHidesRunningVisibleTargetsInOrder) {
    apps.run("b");
    apps.run("a");
    engine.activate({"b", "absent", "a"});
    EXPECT_THAT(apps.calls, ElementsAre("isRunning b", "isHidden b", "hide b", "isRunning absent",
                                        "isRunning a", "isHidden a", "hide a"));
}

TEST_F(HideEngineTest, EngineIsAlreadyActiveWhileItHides) {
    apps.run("a");
    bool wasActive = false;
    apps.onHide = [&] { wasActive = engine.isActive(); };
    engine.activate({"a"});
    EXPECT_TRUE(wasActive);
}

TEST_F(HideEngineTest, DeactivatingShowsWhatWasHiddenAndVisibleBefore) {
    apps.run("a");
    apps.run("b");
    engine.activate({"a", "b"});
    apps.calls.clear();
    engine.deactivate();
    EXPECT_THAT(apps.calls, UnorderedElementsAre("unhide a", "unhide b"));
    EXPECT_FALSE(engine.isActive());
}

TEST_F(HideEngineTest, TargetLaunchedLaterIsHiddenByReapplyAndStaysHiddenAfterwards) {
    engine.activate({"a"});
    apps.run("a");
    EXPECT_TRUE(engine.reapply("a"));
    EXPECT_EQ(apps.count("hide a"), 1);
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 0);
}

TEST_F(HideEngineTest, TargetThatItsUserHadHiddenIsLeftAlone) {
    apps.runHidden("a");
    engine.activate({"a"});
    engine.deactivate();
    EXPECT_THAT(apps.calls, ElementsAre("isRunning a", "isHidden a"));
}

TEST_F(HideEngineTest, UserHiddenTargetThatCameBackIsHiddenAgainAndNotShownAfterwards) {
    apps.runHidden("a");
    engine.activate({"a"});
    EXPECT_TRUE(engine.reapply("a"));
    engine.deactivate();
    EXPECT_EQ(apps.count("hide a"), 1);
    EXPECT_EQ(apps.count("unhide a"), 0);
}

TEST_F(HideEngineTest, UnknownHiddenStateCountsAsVisible) {
    apps.run("a");
    apps.hiddenIsKnown = false;
    engine.activate({"a"});
    EXPECT_EQ(apps.count("hide a"), 1);
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 1);
}

TEST_F(HideEngineTest, TargetListedTwiceIsHiddenOnceAndNotShownAgain) {
    apps.run("a");
    engine.activate({"a", "a"});
    EXPECT_EQ(apps.count("hide a"), 1);
    EXPECT_EQ(apps.count("isHidden a"), 2);
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 0);
}

TEST_F(HideEngineTest, TargetListedTwiceWhoseHidingLagsIsHiddenTwiceAndShown) {
    apps.run("a");
    apps.hidingTakesEffect = false;
    engine.activate({"a", "a"});
    EXPECT_EQ(apps.count("hide a"), 2);
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 1);
}

TEST_F(HideEngineTest, ActivatingTwiceForgetsWhatTheFirstTimeHid) {
    apps.run("a");
    apps.run("b");
    engine.activate({"a"});
    engine.activate({"b"});
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 0);
    EXPECT_EQ(apps.count("unhide b"), 1);
}

TEST_F(HideEngineTest, ActivatingTwiceWithTheSameTargetForgetsThatItWasVisible) {
    apps.run("a");
    engine.activate({"a"});
    engine.activate({"a"});
    EXPECT_EQ(apps.count("hide a"), 1);
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 0);
}

TEST_F(HideEngineTest, ActivatingTwiceForgetsHowATargetWasThatHasEndedMeanwhile) {
    apps.run("a");
    engine.activate({"a"});
    apps.quit("a");
    engine.activate({"a"});
    apps.run("a");
    EXPECT_TRUE(engine.reapply("a"));
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 0);
}

TEST_F(HideEngineTest, ActivatingTwiceReplacesTheTargets) {
    engine.activate({"a"});
    engine.activate({"b"});
    apps.run("a");
    EXPECT_FALSE(engine.reapply("a"));
}

TEST_F(HideEngineTest, ReapplyIgnoresNonTargets) {
    apps.run("a");
    apps.run("A");
    engine.activate({"a"});
    apps.calls.clear();
    EXPECT_FALSE(engine.reapply("A"));
    EXPECT_FALSE(engine.reapply(""));
    EXPECT_THAT(apps.calls, IsEmpty());
}

TEST_F(HideEngineTest, ReapplyWhileInactiveDoesNothing) {
    apps.run("a");
    EXPECT_FALSE(engine.reapply("a"));
    EXPECT_THAT(apps.calls, IsEmpty());
}

TEST_F(HideEngineTest, ReapplyForATargetThatDoesNotRunDoesNotHide) {
    engine.activate({"a"});
    EXPECT_FALSE(engine.reapply("a"));
    EXPECT_EQ(apps.count("hide a"), 0);
}

TEST_F(HideEngineTest, ReapplyHidesEvenWhatIsHiddenAlreadyAndDoesNotAsk) {
    apps.run("a");
    engine.activate({"a"});
    apps.calls.clear();
    EXPECT_TRUE(engine.reapply("a"));
    EXPECT_THAT(apps.calls, ElementsAre("isRunning a", "hide a"));
}

TEST_F(HideEngineTest, EmptyIdentifierIsTreatedLikeAnyOther) {
    apps.run("");
    engine.activate({""});
    EXPECT_EQ(apps.count("hide "), 1);
    EXPECT_TRUE(engine.reapply(""));
}

TEST_F(HideEngineTest, RevealShowsAndLeavesTheModeOn) {
    apps.run("a");
    apps.run("b");
    engine.activate({"a", "b", "a"});
    apps.calls.clear();
    engine.reveal("a");
    EXPECT_THAT(apps.calls, ElementsAre("unhide a"));
    EXPECT_TRUE(engine.isActive());
    EXPECT_FALSE(engine.reapply("a"));
    EXPECT_TRUE(engine.reapply("b"));
    apps.calls.clear();
    engine.deactivate();
    EXPECT_THAT(apps.calls, ElementsAre("unhide b"));
}

TEST_F(HideEngineTest, RevealedAppIsPrivateAgainAtTheNextSwitchOn) {
    apps.run("a");
    engine.activate({"a"});
    engine.reveal("a");
    engine.deactivate();
    engine.activate({"a"});
    EXPECT_EQ(apps.count("hide a"), 2);
}

TEST_F(HideEngineTest, RevealOfAnUnknownAppStillShowsItOnce) {
    engine.reveal("never heard of");
    EXPECT_EQ(apps.count("unhide never heard of"), 1);
    EXPECT_FALSE(engine.isActive());
}

TEST_F(HideEngineTest, AnAddedAppIsHiddenAtOnceAndShownAfterwards) {
    apps.run("a");
    apps.run("b");
    engine.activate({"a"});
    apps.calls.clear();
    engine.addTarget("b");
    EXPECT_THAT(apps.calls, ElementsAre("isRunning b", "isHidden b", "hide b"));
    EXPECT_THAT(engine.targets(), ElementsAre("a", "b"));
    engine.deactivate();
    EXPECT_TRUE(apps.isVisible("a"));
    EXPECT_TRUE(apps.isVisible("b"));
}

TEST_F(HideEngineTest, AnAddedAppThatItsUserHadHiddenIsLeftAlone) {
    apps.runHidden("a");
    engine.activate({});
    engine.addTarget("a");
    engine.deactivate();
    EXPECT_EQ(apps.count("hide a"), 0);
    EXPECT_EQ(apps.count("unhide a"), 0);
}

TEST_F(HideEngineTest, AnAddedAppThatDoesNotRunIsHiddenOnceItDoes) {
    engine.activate({});
    engine.addTarget("a");
    EXPECT_EQ(apps.count("hide a"), 0);
    apps.run("a");
    EXPECT_TRUE(engine.reapply("a"));
}

TEST_F(HideEngineTest, AddingATargetHidesItWhereItIsVisible) {
    apps.run("a");
    apps.runHidden("b");
    engine.activate({"a", "b"});
    engine.addTarget("a");
    engine.addTarget("b");
    EXPECT_EQ(apps.count("hide a"), 1);
    EXPECT_EQ(apps.count("hide b"), 0);
    apps.run("b");
    engine.addTarget("b");
    EXPECT_EQ(apps.count("hide b"), 1);
    EXPECT_THAT(engine.targets(), ElementsAre("a", "b"));
    engine.deactivate();
    EXPECT_TRUE(apps.isVisible("a"));
    EXPECT_TRUE(apps.isVisible("b"));
}

TEST_F(HideEngineTest, ARevealedAppCanBeAddedAgain) {
    apps.run("a");
    engine.activate({"a"});
    engine.reveal("a");
    engine.addTarget("a");
    EXPECT_FALSE(apps.isVisible("a"));
    engine.deactivate();
    EXPECT_TRUE(apps.isVisible("a"));
}

TEST_F(HideEngineTest, AddingWhileInactiveDoesNothing) {
    apps.run("a");
    engine.addTarget("a");
    EXPECT_THAT(apps.calls, IsEmpty());
    EXPECT_THAT(engine.targets(), IsEmpty());
}

TEST_F(HideEngineTest, ARemovedAppIsGivenBackAndTheOthersStay) {
    apps.run("a");
    apps.run("b");
    engine.activate({"a", "b", "c"});
    apps.run("c");
    engine.reapply("c");
    engine.removeTarget("a");
    engine.removeTarget("c");
    EXPECT_TRUE(apps.isVisible("a"));
    EXPECT_TRUE(apps.isVisible("c"));
    EXPECT_FALSE(apps.isVisible("b"));
    EXPECT_FALSE(engine.reapply("a"));
    apps.calls.clear();
    engine.deactivate();
    EXPECT_THAT(apps.calls, ElementsAre("unhide b"));
}

TEST_F(HideEngineTest, ARemovedAppThatItsUserHadHiddenStaysHidden) {
    apps.runHidden("a");
    engine.activate({"a"});
    engine.removeTarget("a");
    EXPECT_EQ(apps.count("unhide a"), 0);
    EXPECT_THAT(engine.targets(), IsEmpty());
}

TEST_F(HideEngineTest, ARemovedAppThatItsUserHadHiddenStaysHiddenThoughItCameForward) {
    apps.runHidden("a");
    engine.activate({"a"});
    engine.reapply("a");
    engine.removeTarget("a");
    EXPECT_EQ(apps.count("unhide a"), 0);
}

TEST_F(HideEngineTest, DeactivatingWhileInactiveIsHarmless) {
    engine.deactivate();
    engine.deactivate();
    EXPECT_THAT(apps.calls, IsEmpty());
    EXPECT_FALSE(engine.isActive());
}

TEST_F(HideEngineTest, NothingIsReappliedAfterDeactivating) {
    apps.run("a");
    engine.activate({"a"});
    engine.deactivate();
    apps.calls.clear();
    EXPECT_FALSE(engine.reapply("a"));
    engine.deactivate();
    EXPECT_THAT(apps.calls, IsEmpty());
}

/// Does something the first time that it is asked to hide or show an app.
struct ReentrantHideEngineTest : HideEngineTest {
    ReentrantHideEngineTest() {
        for (const auto* const app : {"a", "b", "c"}) {
            apps.run(app);
        }
    }

    static std::function<void()> once(std::function<void()> action) {
        return [action = std::move(action)]() mutable {
            if (const auto now = std::exchange(action, nullptr)) {
                now();
            }
        };
    }
};

TEST_F(ReentrantHideEngineTest, SwitchingOffWhileAnAppIsHiddenLeavesNothingHidden) {
    // Longer than what a text holds without memory of its own.
    const std::string longName(100, 'l');
    apps.run(longName);
    apps.onHide = once([&] { engine.deactivate(); });
    engine.activate({longName, "a", "b", "c"});
    EXPECT_FALSE(engine.isActive());
    for (const auto& app : {longName, std::string("a"), std::string("b"), std::string("c")}) {
        EXPECT_TRUE(apps.isVisible(app)) << app;
    }
    apps.calls.clear();
    engine.deactivate();
    EXPECT_THAT(apps.calls, IsEmpty());
}

TEST_F(ReentrantHideEngineTest, SwitchingOnAnewWhileAnAppIsHiddenIsTheLastWord) {
    apps.onHide = once([&] { engine.activate({"c"}); });
    engine.activate({"a", "b"});
    EXPECT_TRUE(engine.isActive());
    EXPECT_EQ(apps.count("hide b"), 0);
    EXPECT_FALSE(engine.reapply("b"));
    EXPECT_TRUE(engine.reapply("c"));
    engine.deactivate();
    EXPECT_EQ(apps.count("unhide c"), 1);
}

TEST_F(ReentrantHideEngineTest, SwitchingOnAnewWithTheSameTargetsAsksAboutThemOnce) {
    apps.onHide = once([&] { engine.activate({"b"}); });
    engine.activate({"a", "b"});
    EXPECT_EQ(apps.count("isHidden b"), 1);
    engine.deactivate();
    EXPECT_TRUE(apps.isVisible("b"));
}

TEST_F(ReentrantHideEngineTest, WhatIsRevealedWhileAnotherAppIsHiddenIsNotHidden) {
    apps.onHide = once([&] { engine.reveal("b"); });
    engine.activate({"a", "b", "c"});
    EXPECT_TRUE(engine.isActive());
    EXPECT_EQ(apps.count("hide b"), 0);
    EXPECT_EQ(apps.count("hide c"), 1);
}

TEST_F(ReentrantHideEngineTest, WhatIsRevealedWhileItIsHiddenIsNoTargetAnyMore) {
    apps.onHide = once([&] { engine.reveal("a"); });
    engine.activate({"a"});
    EXPECT_TRUE(apps.isVisible("a"));
    apps.calls.clear();
    engine.deactivate();
    EXPECT_THAT(apps.calls, IsEmpty());
}

TEST_F(ReentrantHideEngineTest, WhatIsRevealedWhileAnotherAppIsShownIsShownOnce) {
    engine.activate({"a", "b", "c"});
    apps.onUnhide = once([&] {
        engine.reveal("b");
        engine.reveal("c");
    });
    engine.deactivate();
    EXPECT_FALSE(engine.isActive());
    for (const auto* const app : {"a", "b", "c"}) {
        EXPECT_EQ(apps.count(std::string("unhide ") + app), 1) << app;
    }
}

TEST_F(ReentrantHideEngineTest, RevealingTheVeryAppThatIsShownIsHarmless) {
    engine.activate({"a", "b"});
    apps.onUnhide = once([&] { engine.reveal("a"); });
    engine.deactivate();
    EXPECT_TRUE(apps.isVisible("a"));
    EXPECT_TRUE(apps.isVisible("b"));
    EXPECT_FALSE(engine.isActive());
}

TEST_F(ReentrantHideEngineTest, SwitchingOffTwiceAtOnceShowsEveryAppOnce) {
    engine.activate({"a", "b", "c"});
    apps.onUnhide = [&] { engine.deactivate(); };
    engine.deactivate();
    EXPECT_FALSE(engine.isActive());
    for (const auto* const app : {"a", "b", "c"}) {
        EXPECT_EQ(apps.count(std::string("unhide ") + app), 1) << app;
    }
}

TEST_F(ReentrantHideEngineTest, SwitchingOnWhileAnAppIsShownIsTheLastWord) {
    engine.activate({"a", "b"});
    apps.onUnhide = once([&] { engine.activate({"a", "b"}); });
    engine.deactivate();
    EXPECT_TRUE(engine.isActive());
    EXPECT_FALSE(apps.isVisible("a"));
    EXPECT_FALSE(apps.isVisible("b"));
}

TEST_F(HideEngineTest, AnotherEngineTakesUpWhereOneWasLeft) {
    apps.run("a");
    apps.runHidden("b");
    apps.run("c");
    engine.activate({"a", "b"});
    const auto state = engine.state();
    HideEngine next(apps);
    apps.calls.clear();
    next.resume(state);
    EXPECT_TRUE(next.isActive());
    EXPECT_THAT(next.targets(), ElementsAre("a", "b"));
    EXPECT_EQ(apps.count("hide a"), 1);
    EXPECT_EQ(apps.count("hide b"), 0);
    next.deactivate();
    EXPECT_EQ(apps.count("unhide a"), 1);
    EXPECT_EQ(apps.count("unhide b"), 0);
    EXPECT_EQ(apps.count("hide c"), 0);
}

TEST_F(HideEngineTest, TakingUpHidesWhatHasComeUpSince) {
    apps.runHidden("users");
    engine.activate({"later", "users"});
    const auto state = engine.state();
    apps.run("later");
    apps.run("users");
    HideEngine next(apps);
    next.resume(state);
    EXPECT_EQ(apps.count("hide later"), 1);
    EXPECT_EQ(apps.count("hide users"), 1);
    next.deactivate();
    EXPECT_EQ(apps.count("unhide later"), 1);
    EXPECT_EQ(apps.count("unhide users"), 1);
}

TEST_F(HideEngineTest, WhoSwitchesOffWhileItTakesUpIsHeeded) {
    apps.run("a");
    apps.run("b");
    engine.activate({"a", "b"});
    const auto state = engine.state();
    apps.run("a");
    apps.run("b");
    HideEngine next(apps);
    apps.calls.clear();
    apps.onHide = [&] { next.deactivate(); };
    next.resume(state);
    EXPECT_FALSE(next.isActive());
    EXPECT_EQ(apps.count("hide b"), 0);
}

TEST_F(HideEngineTest, NothingIsHiddenAgainWhilePrivacyModeIsOff) {
    apps.run("a");
    engine.hideAgain();
    EXPECT_THAT(apps.calls, IsEmpty());
}

TEST_F(HideEngineTest, EveryChangeIsToldOfBeforeAnAppIsHiddenAndAfterOneIsShown) {
    using State = HideEngine::State;
    apps.run("a");
    apps.run("b");
    apps.runHidden("h");
    std::vector<std::string> steps;
    State told;
    engine.onChange = [&] {
        steps.emplace_back("note");
        told = engine.state();
    };
    apps.onHide = apps.onUnhide = [&] {
        steps.push_back(apps.calls.back());
        EXPECT_EQ(steps.back().starts_with("hide"), engine.state() == told);
    };
    const auto taken = [&] { return std::exchange(steps, {}); };
    engine.activate({"a", "h"});
    EXPECT_THAT(taken(), ElementsAre("note", "note", "hide a", "note"));
    EXPECT_EQ(told, (State{{"a", "h"}, {"a"}, {{"a", false}, {"h", true}}}));
    engine.addTarget("b");
    EXPECT_THAT(taken(), ElementsAre("note", "note", "hide b"));
    engine.reapply("h");
    EXPECT_THAT(taken(), ElementsAre("note", "hide h"));
    engine.reveal("b");
    EXPECT_THAT(taken(), ElementsAre("unhide b", "note"));
    engine.removeTarget("h");
    EXPECT_THAT(taken(), ElementsAre("note"));
    engine.deactivate();
    EXPECT_THAT(taken(), ElementsAre("unhide a", "note"));
    EXPECT_EQ(told, State());
}

} // namespace
