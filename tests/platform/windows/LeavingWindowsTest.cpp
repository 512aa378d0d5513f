#include "platform/linux/windows/LeavingWindows.h"
#include "tests/support/HandDrivenQueue.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using LinuxPlatform::LeavingWindows;
using LinuxPlatform::WindowId;

struct LeavingWindowsTest : testing::Test {
    TestSupport::HandDrivenQueue queue;
    LeavingWindows leaving{queue};
};

TEST_F(LeavingWindowsTest, ThoseThatWereAskedAreOnTheirWayForASecond) {
    leaving.add(std::array<WindowId, 2>{1, 2});
    EXPECT_TRUE(leaving.contains(1));
    EXPECT_TRUE(leaving.contains(2));
    EXPECT_FALSE(leaving.contains(3));
    queue.advance(0.99);
    EXPECT_TRUE(leaving.contains(1));
    queue.advance(0.01);
    EXPECT_FALSE(leaving.contains(1));
}

TEST_F(LeavingWindowsTest, NothingIsOnItsWayAtFirst) {
    EXPECT_FALSE(leaving.contains(0));
}

TEST_F(LeavingWindowsTest, ThoseThatAreAskedLaterHoldTheOthersToo) {
    leaving.add(std::array<WindowId, 1>{1});
    queue.advance(0.9);
    leaving.add(std::array<WindowId, 1>{2});
    queue.advance(0.9);
    EXPECT_TRUE(leaving.contains(1)) << "the session is busy with the second one";
    EXPECT_TRUE(leaving.contains(2));
}

TEST_F(LeavingWindowsTest, WhatHasSettledIsNotOnItsWay) {
    leaving.add(std::array<WindowId, 2>{1, 2});
    leaving.remove([](WindowId window) { return window == 1; });
    EXPECT_FALSE(leaving.contains(1));
    EXPECT_TRUE(leaving.contains(2));
}

} // namespace
