#include "core/EmbarrassmentScore.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <utility>

namespace {

using namespace CurtainCore;

ScoreResult evaluate(const ScoreInput& input) {
    return EmbarrassmentScoreEngine().evaluate(input);
}

ScoreInput clean() {
    ScoreInput input;
    input.privacyModeActive = true;
    return input;
}

ScoreInput everythingWrong(std::int64_t apps) {
    return {apps, false, true, true, false, false, false};
}

TEST(EmbarrassmentScore, NothingExposedAndNothingTestedCostsNothing) {
    EXPECT_EQ(evaluate(clean()), (ScoreResult{0, RiskLevel::low}));
}

TEST(EmbarrassmentScore, PrivacyModeOffAlwaysCosts) {
    auto input = clean();
    input.privacyModeActive = false;
    EXPECT_EQ(evaluate(input), (ScoreResult{10, RiskLevel::low}));
    input.visiblePrivateApps = 1;
    EXPECT_EQ(evaluate(input), (ScoreResult{35, RiskLevel::medium}));
}

TEST(EmbarrassmentScore, PrivateAppsCostLessEachUpToACap) {
    constexpr auto expectations = std::to_array<std::pair<std::int64_t, int>>({
        {std::numeric_limits<std::int64_t>::min(), 0},
        {-1, 0},
        {0, 0},
        {1, 25},
        {2, 35},
        {3, 45},
        {4, 55},
        {5, 65},
        {6, 65},
        {1'000'000'000'000, 65},
    });
    for (const auto& [apps, score] : expectations) {
        auto input = clean();
        input.visiblePrivateApps = apps;
        EXPECT_EQ(evaluate(input).score, score) << apps;
    }
}

TEST(EmbarrassmentScore, FinderCostsTheSameBesideAnyNumberOfApps) {
    constexpr auto expectations =
        std::to_array<std::pair<std::int64_t, int>>({{-1, 20}, {0, 20}, {1, 45}, {5, 85}, {6, 85}});
    for (const auto& [apps, score] : expectations) {
        auto input = clean();
        input.visiblePrivateApps = apps;
        input.finderVisible = true;
        EXPECT_EQ(evaluate(input).score, score) << apps;
    }
}

TEST(EmbarrassmentScore, EveryOtherFactHasItsOwnPrice) {
    auto desktop = clean();
    desktop.desktopFiles = true;
    EXPECT_EQ(evaluate(desktop), (ScoreResult{15, RiskLevel::low}));
    auto notifications = clean();
    notifications.notificationsMayAppear = true;
    EXPECT_EQ(evaluate(notifications), (ScoreResult{20, RiskLevel::low}));
}

TEST(EmbarrassmentScore, OnlyAFailedCheckCosts) {
    for (const auto check : {&ScoreInput::micWorking, &ScoreInput::cameraAvailable}) {
        auto input = clean();
        input.*check = std::nullopt;
        EXPECT_EQ(evaluate(input).score, 0);
        input.*check = true;
        EXPECT_EQ(evaluate(input).score, 0);
        input.*check = false;
        EXPECT_EQ(evaluate(input).score, 10);
    }
}

TEST(EmbarrassmentScore, TheScoreStopsAtAHundred) {
    for (const std::int64_t apps : {5, 6, 7, 1000}) {
        EXPECT_EQ(evaluate(everythingWrong(apps)), (ScoreResult{100, RiskLevel::veryHigh})) << apps;
    }
    auto withFinder = everythingWrong(7);
    withFinder.finderVisible = true;
    EXPECT_EQ(evaluate(withFinder), (ScoreResult{100, RiskLevel::veryHigh}));
}

TEST(EmbarrassmentScore, TheScoreReachesAHundredWithoutTheCap) {
    auto input = everythingWrong(2);
    EXPECT_EQ(evaluate(input), (ScoreResult{100, RiskLevel::veryHigh}));
    input.privacyModeActive = true;
    EXPECT_EQ(evaluate(input), (ScoreResult{90, RiskLevel::veryHigh}));
}

TEST(EmbarrassmentScore, LevelsChangeAtTheirBoundaries) {
    constexpr auto expectations = std::to_array<std::pair<int, RiskLevel>>({
        {std::numeric_limits<int>::min(), RiskLevel::low},
        {-1, RiskLevel::low},
        {0, RiskLevel::low},
        {20, RiskLevel::low},
        {21, RiskLevel::medium},
        {50, RiskLevel::medium},
        {51, RiskLevel::high},
        {80, RiskLevel::high},
        {81, RiskLevel::veryHigh},
        {100, RiskLevel::veryHigh},
        {150, RiskLevel::veryHigh},
        {std::numeric_limits<int>::max(), RiskLevel::veryHigh},
    });
    for (const auto& [score, level] : expectations) {
        EXPECT_EQ(EmbarrassmentScoreEngine::risk(score), level) << score;
    }
}

TEST(EmbarrassmentScore, LevelsComeInOrder) {
    EXPECT_LT(RiskLevel::low, RiskLevel::medium);
    EXPECT_LT(RiskLevel::medium, RiskLevel::high);
    EXPECT_LT(RiskLevel::high, RiskLevel::veryHigh);
}

TEST(EmbarrassmentScore, ResultsAreEqualWhenScoreAndLevelAre) {
    EXPECT_EQ((ScoreResult{10, RiskLevel::low}), (ScoreResult{10, RiskLevel::low}));
    EXPECT_NE((ScoreResult{10, RiskLevel::low}), (ScoreResult{11, RiskLevel::low}));
    EXPECT_NE((ScoreResult{10, RiskLevel::low}), (ScoreResult{10, RiskLevel::high}));
}

TEST(EmbarrassmentScoreDeathTest, MoreAppsThanCanBeMultipliedAreFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr auto most = std::numeric_limits<std::int64_t>::max() / 10 + 1;
    auto input = clean();
    input.visiblePrivateApps = most;
    EXPECT_EQ(evaluate(input).score, 65);
    input.visiblePrivateApps = most + 1;
    EXPECT_DEATH(evaluate(input), "");
    input.visiblePrivateApps = std::numeric_limits<std::int64_t>::max();
    EXPECT_DEATH(evaluate(input), "");
}

} // namespace
