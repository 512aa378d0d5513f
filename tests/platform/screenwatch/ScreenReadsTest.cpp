#include "platform/linux/screenwatch/ScreenReads.h"

#include <gmock/gmock.h>

#include <chrono>

namespace {

using LinuxPlatform::ScreenArea;
using LinuxPlatform::ScreenReads;
using namespace std::chrono_literals;

constexpr int width = 1600;
constexpr int height = 900;
constexpr ScreenArea whole{0, 0, width, height};
constexpr ScreenArea eighth{0, 0, width / 4, height / 2};
constexpr ScreenArea small{100, 100, width / 4, height / 2 - 10};

struct ScreenReadsTest : testing::Test {
    ScreenReads reads{width, height};

    void addEvery(ScreenReads::Time period, ScreenReads::Time from, ScreenReads::Time to, ScreenArea area) {
        for (auto time = from; time <= to; time += period) {
            reads.add(time, area);
        }
    }
};

TEST_F(ScreenReadsTest, NothingReadIsNoCapture) {
    EXPECT_FALSE(reads.isCapture(5s, true));
    EXPECT_FALSE(reads.isCapture(50s, false));
}

TEST_F(ScreenReadsTest, ReadingAgainAndAgainIsACapture) {
    addEvery(66ms, 0s, 200ms, whole);
    EXPECT_FALSE(reads.isConspicuous());
    EXPECT_FALSE(reads.isCapture(250ms, false));
    addEvery(66ms, 264ms, 300ms, whole);
    EXPECT_TRUE(reads.isConspicuous());
    EXPECT_TRUE(reads.isCapture(300ms, false));
}

TEST_F(ScreenReadsTest, ThirtyAndFiveFramesASecondAreKnownWithinASecond) {
    addEvery(33ms, 0s, 270ms, whole);
    EXPECT_TRUE(reads.isCapture(270ms, false));
    ScreenReads slower(width, height);
    for (auto time = 0ms; time <= 800ms; time += 200ms) {
        EXPECT_FALSE(slower.isCapture(time, false));
        slower.add(time, whole);
    }
    EXPECT_TRUE(slower.isCapture(800ms, false));
}

TEST_F(ScreenReadsTest, AMagnifierOfTheWholeScreenIsNotTakenForACaptureAtOnce) {
    addEvery(250ms, 0s, 990ms, whole);
    EXPECT_FALSE(reads.isConspicuous());
    EXPECT_FALSE(reads.isCapture(990ms, false));
}

TEST_F(ScreenReadsTest, WhoFollowsTheScreenAndReadsAgainIsACapture) {
    reads.followScreen(0s);
    addEvery(30ms, 50ms, 110ms, small);
    EXPECT_FALSE(reads.isConspicuous()) << "it has only begun to";
    reads.add(150ms, small);
    EXPECT_TRUE(reads.isConspicuous());
    EXPECT_FALSE(reads.isCapture(150ms, false)) << "it does not any more";
    EXPECT_TRUE(reads.isCapture(150ms, true));
}

TEST_F(ScreenReadsTest, WhoFollowsTheScreenAndDoesNotReadItIsNone) {
    reads.followScreen(0s);
    EXPECT_FALSE(reads.isConspicuous());
    EXPECT_FALSE(reads.isCapture(5s, true));
}

TEST_F(ScreenReadsTest, WhoFollowsAStillScreenIsKnownByItsNextReads) {
    reads.followScreen(0s);
    reads.add(50ms, small);
    EXPECT_FALSE(reads.isCapture(30s, true));
    EXPECT_FALSE(reads.isOver(30s));
    reads.add(30s, small);
    EXPECT_FALSE(reads.isConspicuous()) << "two looks half a minute apart";
    reads.add(30s + 100ms, small);
    EXPECT_TRUE(reads.isConspicuous());
    EXPECT_TRUE(reads.isCapture(30s + 100ms, true));
}

TEST_F(ScreenReadsTest, OneFrameASecondIsEnough) {
    addEvery(1s, 500ms, 1500ms, whole);
    EXPECT_TRUE(reads.isCapture(2s, false));
}

TEST_F(ScreenReadsTest, AScreenThatHasGrownIsReadWhereItIsNew) {
    constexpr ScreenArea right{width, 0, width, height};
    addEvery(66ms, 0s, 2s, right);
    EXPECT_FALSE(reads.isCapture(2s, false));
    reads.setScreenSize(2 * width, height);
    addEvery(66ms, 2s, 4s, right);
    EXPECT_TRUE(reads.isCapture(4s, false));
}

TEST_F(ScreenReadsTest, ScreenshotThatFallsIntoTwoSecondsIsNoCapture) {
    addEvery(20ms, 900ms, 1140ms, whole);
    EXPECT_FALSE(reads.isCapture(2s, false));
}

TEST_F(ScreenReadsTest, AnEighthOfTheScreenIsMuch) {
    addEvery(1s, 0s, 3s, eighth);
    EXPECT_TRUE(reads.isCapture(3s, false));
}

TEST_F(ScreenReadsTest, LessIsNot) {
    addEvery(100ms, 0s, 9s, small);
    EXPECT_FALSE(reads.isCapture(9s, false));
}

TEST_F(ScreenReadsTest, LineByLineAllOverTheScreenIsMuch) {
    for (auto time = 0ms; time < 3s; time += 10ms) {
        const auto line = static_cast<int>(time / 10ms) * 37 % height;
        reads.add(time, {0, line, width, 1});
    }
    EXPECT_TRUE(reads.isCapture(3s, false));
    ScreenReads oneOfTwoMonitors(width, height);
    for (auto time = 0ms; time < 3s; time += 10ms) {
        const auto line = static_cast<int>(time / 10ms) * 37 % height;
        oneOfTwoMonitors.add(time, {width / 2, line, width / 2, 1});
    }
    EXPECT_TRUE(oneOfTwoMonitors.isCapture(3s, false));
}

TEST_F(ScreenReadsTest, FewLinesAreLittle) {
    addEvery(10ms, 0s, 3s, {0, 300, width, 1});
    EXPECT_FALSE(reads.isCapture(3s, false));
}

TEST_F(ScreenReadsTest, WanderingMagnifierIsNoCapture) {
    for (auto time = 0ms; time < 10s; time += 50ms) {
        const auto step = static_cast<int>(time / 50ms);
        reads.add(time, {step * 97 % 1200, step * 53 % 600, 400, 300});
        EXPECT_FALSE(reads.isCapture(time, false)) << step;
    }
}

TEST_F(ScreenReadsTest, WhoFollowsChangesMayReadLittle) {
    reads.add(1s, {0, 0, 1, 1});
    reads.add(2500ms, {0, 0, 1, 1});
    EXPECT_FALSE(reads.isCapture(3s, false));
    EXPECT_TRUE(reads.isCapture(3s, true));
}

TEST_F(ScreenReadsTest, LastsTenSecondsBeyondTheLastRead) {
    addEvery(500ms, 0s, 3s, whole);
    EXPECT_TRUE(reads.isCapture(3s, false));
    EXPECT_TRUE(reads.isCapture(13s, false));
    EXPECT_FALSE(reads.isOver(13s));
    EXPECT_FALSE(reads.isCapture(13001ms, false));
    EXPECT_TRUE(reads.isOver(13001ms));
}

TEST_F(ScreenReadsTest, LastsAsLongAsChangesAreFollowed) {
    addEvery(500ms, 0s, 3s, whole);
    EXPECT_TRUE(reads.isCapture(3s, true));
    EXPECT_TRUE(reads.isCapture(600s, true));
    EXPECT_FALSE(reads.isOver(600s));
    EXPECT_FALSE(reads.isCapture(601s, false));
}

TEST_F(ScreenReadsTest, BeginsAnew) {
    addEvery(500ms, 0s, 3s, whole);
    EXPECT_TRUE(reads.isCapture(3s, false));
    EXPECT_FALSE(reads.isCapture(60s, false));
    reads.add(61s, whole);
    EXPECT_FALSE(reads.isCapture(61s, false));
    reads.add(63s, whole);
    EXPECT_TRUE(reads.isCapture(63s, false));
}

TEST_F(ScreenReadsTest, ScreenshotsFarApartAreNoCapture) {
    for (auto time = 0s; time < 120s; time += 11s) {
        reads.add(time, whole);
        EXPECT_FALSE(reads.isCapture(time, false));
    }
}

TEST_F(ScreenReadsTest, AreasOutsideAndEmptyOnesAreNothing) {
    for (const auto& area : {ScreenArea{width, 0, 900, 900}, ScreenArea{-900, 0, 900, 900},
                             ScreenArea{0, height, 900, 900}, ScreenArea{0, 0, 0, 900}}) {
        addEvery(500ms, 0s, 5s, area);
    }
    EXPECT_FALSE(reads.isCapture(5s, true));
    addEvery(500ms, 5s, 9s, {-100, -100, width + 500, height + 500});
    EXPECT_TRUE(reads.isCapture(9s, false));
}

} // namespace
