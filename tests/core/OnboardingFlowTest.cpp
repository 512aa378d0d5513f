#include "core/OnboardingFlow.h"

#include <gmock/gmock.h>

namespace {

using namespace CurtainCore;
using testing::ElementsAre;
using Progress = OnboardingFlow::Progress;

const auto welcome = OnboardingStep::welcome();
const auto compatibility = OnboardingStep::compatibility();
const auto desktop = OnboardingStep::permission(PermissionKind::desktop);
const auto microphone = OnboardingStep::permission(PermissionKind::microphone);
const auto camera = OnboardingStep::permission(PermissionKind::camera);
const auto summary = OnboardingStep::summary();

TEST(OnboardingStep, EqualityComparesPageAndKind) {
    EXPECT_EQ(desktop, OnboardingStep::permission(PermissionKind::desktop));
    EXPECT_NE(desktop, camera);
    EXPECT_NE(desktop, welcome);
    EXPECT_NE(welcome, compatibility);
    EXPECT_NE(compatibility, summary);
}

TEST(OnboardingStep, OnlyPermissionPagesCarryAKind) {
    EXPECT_EQ(camera.page(), OnboardingStep::Page::permission);
    EXPECT_EQ(camera.permissionKind(), PermissionKind::camera);
    EXPECT_EQ(welcome.page(), OnboardingStep::Page::welcome);
    EXPECT_EQ(compatibility.page(), OnboardingStep::Page::compatibility);
    EXPECT_EQ(summary.page(), OnboardingStep::Page::summary);
    for (const auto& step : {welcome, compatibility, summary}) {
        EXPECT_EQ(step.permissionKind(), std::nullopt);
    }
}

TEST(OnboardingFlow, PagesComeInTheirFixedOrderWhereverItStarts) {
    for (const auto& start : {welcome, microphone, summary}) {
        EXPECT_THAT(OnboardingFlow(start).steps(),
                    ElementsAre(welcome, compatibility, desktop, microphone, camera, summary));
        EXPECT_EQ(OnboardingFlow(start).step(), start);
    }
    EXPECT_THAT(OnboardingFlow::permissionOrder,
                ElementsAre(PermissionKind::desktop, PermissionKind::microphone, PermissionKind::camera));
}

TEST(OnboardingFlow, WalksFromWelcomeToSummary) {
    OnboardingFlow flow(welcome);
    std::size_t index = 0;
    for (const auto& step : {welcome, compatibility, desktop, microphone, camera, summary}) {
        EXPECT_EQ(flow.step(), step);
        EXPECT_EQ(flow.progress(), (Progress{index, 6}));
        EXPECT_EQ(flow.hasNext(), index < 5);
        flow.advance();
        ++index;
    }
    EXPECT_EQ(flow.step(), summary);
}

TEST(OnboardingFlow, StaysAtTheSummary) {
    OnboardingFlow flow(summary);
    EXPECT_FALSE(flow.hasNext());
    EXPECT_EQ(flow.progress(), (Progress{5, 6}));
    flow.advance();
    flow.advance();
    EXPECT_EQ(flow.step(), summary);
    EXPECT_EQ(flow.progress(), (Progress{5, 6}));
}

TEST(OnboardingFlow, StartsInTheMiddle) {
    OnboardingFlow flow(microphone);
    EXPECT_EQ(flow.progress(), (Progress{3, 6}));
    EXPECT_TRUE(flow.hasNext());
    flow.advance();
    EXPECT_EQ(flow.step(), camera);
}

TEST(OnboardingFlow, AStepThatIsNoPageLeadsNowhere) {
    const auto stranger = OnboardingStep::permission(static_cast<PermissionKind>(99));
    OnboardingFlow flow(stranger);
    EXPECT_EQ(flow.step(), stranger);
    EXPECT_FALSE(flow.hasNext());
    EXPECT_EQ(flow.progress(), (Progress{0, 6}));
    flow.advance();
    EXPECT_EQ(flow.step(), stranger);
}

TEST(OnboardingFlow, FlowsAreEqualWhenTheyStandAtTheSameStep) {
    OnboardingFlow flow(welcome);
    EXPECT_EQ(flow, OnboardingFlow(welcome));
    flow.advance();
    EXPECT_NE(flow, OnboardingFlow(welcome));
    EXPECT_EQ(flow, OnboardingFlow(compatibility));
}

} // namespace
