#include "platform/linux/windows/HidingTrial.h"

#include <gmock/gmock.h>

#include <array>
#include <set>
#include <vector>

namespace {

using LinuxPlatform::HidingTrial;
using LinuxPlatform::WindowId;
using testing::ElementsAre;
using testing::IsEmpty;

struct HidingTrialTest : testing::Test {
    HidingTrial trial;
    std::set<WindowId> hidden;
    std::set<WindowId> gone;

    std::uint64_t ask(const std::vector<WindowId>& windows) { return trial.begin(windows); }
    void look() {
        trial.note([this](WindowId window) { return hidden.contains(window); },
                   [this](WindowId window) { return gone.contains(window); });
    }
};

TEST_F(HidingTrialTest, NobodyIsInDoubtWhoWasNotAsked) {
    trial.becomeLate(ask({}));
    trial.judge(trial.lastRequest());
    EXPECT_FALSE(trial.isInDoubt());
    EXPECT_FALSE(trial.isLost());
}

TEST_F(HidingTrialTest, WhoHidesNothingIsInDoubtAndThenLost) {
    const auto request = ask({1, 2});
    look();
    EXPECT_FALSE(trial.isInDoubt()) << "it is not late yet";
    trial.becomeLate(request);
    EXPECT_TRUE(trial.isInDoubt());
    EXPECT_FALSE(trial.isLost());
    EXPECT_THAT(trial.awaited(request), ElementsAre(1, 2));
    trial.judge(request);
    EXPECT_TRUE(trial.isLost());
}

TEST_F(HidingTrialTest, OneThatWasHiddenIsEnough) {
    const auto request = ask({1, 2});
    hidden = {1};
    look();
    trial.becomeLate(request);
    trial.judge(request);
    EXPECT_FALSE(trial.isInDoubt());
    EXPECT_FALSE(trial.isLost());
    EXPECT_EQ(trial.hidden(), 1);
    EXPECT_THAT(trial.awaited(request), ElementsAre(2));
}

TEST_F(HidingTrialTest, ALostTrialIsWonByHidingOne) {
    trial.judge(ask({1}));
    ASSERT_TRUE(trial.isLost());
    ask({2});
    hidden = {2};
    look();
    EXPECT_FALSE(trial.isLost());
}

TEST_F(HidingTrialTest, WindowsThatWereClosedOrShownAgainSayNothing) {
    const auto request = ask({1, 2});
    gone = {1};
    look();
    trial.withdraw(std::array<WindowId, 1>{2});
    trial.becomeLate(request);
    trial.judge(request);
    EXPECT_THAT(trial.awaited(request), IsEmpty());
    EXPECT_FALSE(trial.isInDoubt());
    EXPECT_FALSE(trial.isLost());
}

TEST_F(HidingTrialTest, LaterRequestsAreNotLateYet) {
    const auto first = ask({1});
    const auto second = ask({1, 2});
    trial.becomeLate(first);
    EXPECT_TRUE(trial.isLate(first));
    EXPECT_FALSE(trial.isLate(second));
    EXPECT_THAT(trial.awaited(first), ElementsAre(1)) << "the first request counts";
    EXPECT_THAT(trial.awaited(second), ElementsAre(1, 2));
}

TEST_F(HidingTrialTest, AnotherOneIsTriedAnew) {
    trial.judge(ask({1}));
    trial.startAnew();
    EXPECT_FALSE(trial.isLost());
    EXPECT_FALSE(trial.isAwaited(1));
    hidden = {1};
    look();
    EXPECT_EQ(trial.hidden(), 0);
}

} // namespace
