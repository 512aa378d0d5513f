#include "platform/linux/windows/StackingMemory.h"

#include <gtest/gtest.h>

#include <array>
#include <set>
#include <vector>

namespace {

using LinuxPlatform::StackingMemory;
using LinuxPlatform::WindowId;
using Order = std::vector<WindowId>;
using Windows = std::set<WindowId>;

/// Of which 2 and 4 are away.
struct StackingMemoryTest : testing::Test {
    StackingMemory memory;

    StackingMemoryTest() {
        memory.noteHiding(std::array<WindowId, 1>{2}, Order{1, 2, 3, 4, 5});
        // By now the window manager may have changed the order.
        memory.noteHiding(std::array<WindowId, 1>{4}, Order{2, 5, 1, 3, 4});
    }
};

TEST_F(StackingMemoryTest, WindowsComeBackBetweenTheirNeighbours) {
    EXPECT_EQ(memory.arrange({4, 2, 1, 3, 5}, {2, 4}), (Order{1, 2, 3, 4, 5}));
    EXPECT_EQ(memory.arrange({1, 3, 5, 2}, {2}), (Order{1, 2, 3, 5}));
}

TEST_F(StackingMemoryTest, OthersStayWhereTheyAre) {
    EXPECT_EQ(memory.arrange({5, 3, 1, 2, 4}, {2, 4}), (Order{2, 4, 5, 3, 1}));
    EXPECT_EQ(memory.arrange({3, 2, 1}, {}), (Order{3, 2, 1}));
}

TEST_F(StackingMemoryTest, WhatWasRaisedMeanwhileLiesAboveWhatWasBelowIt) {
    EXPECT_EQ(memory.arrange({1, 5, 2, 4, 3}, {2, 4}), (Order{1, 2, 4, 5, 3}));
}

TEST_F(StackingMemoryTest, NewWindowsStayAbove) {
    EXPECT_EQ(memory.arrange({1, 3, 5, 6, 2, 4}, {2, 4}), (Order{1, 2, 3, 4, 5, 6}));
    memory.forget(std::array<WindowId, 3>{1, 3, 5});
    EXPECT_EQ(memory.arrange({6, 2, 4}, {2, 4}), (Order{2, 4, 6}));
}

TEST_F(StackingMemoryTest, NewWindowThatIsHiddenTooIsRememberedAboveItsNeighbour) {
    EXPECT_FALSE(memory.knows(std::array<WindowId, 1>{6}));
    memory.noteHiding(std::array<WindowId, 1>{6}, Order{2, 4, 1, 3, 6, 5});
    EXPECT_TRUE(memory.knows(std::array<WindowId, 2>{6, 2}));
    EXPECT_EQ(memory.arrange({1, 3, 5, 2, 6, 4}, {2, 4, 6}), (Order{1, 2, 3, 6, 4, 5}));
}

TEST_F(StackingMemoryTest, WindowsOfWhichNothingIsKnownAreLeftAlone) {
    EXPECT_EQ(memory.arrange({1, 7, 3}, {7, 8, 4}), (Order{1, 7, 3}));
}

TEST_F(StackingMemoryTest, IdentifierOfAClosedWindowHasNoPlace) {
    memory.forget(std::array<WindowId, 1>{2});
    EXPECT_EQ(memory.arrange({1, 3, 4, 5, 2}, {4}), (Order{1, 3, 4, 5, 2}));
    EXPECT_FALSE(memory.knows(std::array<WindowId, 1>{2}));
}

TEST_F(StackingMemoryTest, NothingIsRememberedOnceAllAreBack) {
    memory.forgetHiding([](WindowId window) { return window == 2; });
    EXPECT_TRUE(memory.knows(std::array<WindowId, 1>{2})) << "the other one needs the order";
    memory.forget(std::array<WindowId, 1>{4});
    EXPECT_FALSE(memory.knows(std::array<WindowId, 1>{1}));
    memory.noteHiding(std::array<WindowId, 1>{1}, Order{3, 1, 2});
    EXPECT_EQ(memory.arrange({1, 2, 3}, {1}), (Order{1, 2, 3}));
    EXPECT_EQ(memory.arrange({2, 3, 1}, {1}), (Order{1, 2, 3}));
}

} // namespace
