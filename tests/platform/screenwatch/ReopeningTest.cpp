#include "platform/linux/screenwatch/Reopening.h"

#include <gmock/gmock.h>

#include <chrono>
#include <vector>

namespace {

using LinuxPlatform::Reopening;
using testing::ElementsAre;
using namespace std::chrono_literals;

struct ReopeningTest : testing::Test {
    Reopening reopening;
    Reopening::Clock::time_point now{};

    /// How long it takes until it may be tried again.
    std::chrono::seconds pause() {
        const auto start = now;
        while (!reopening.isDue(now)) {
            now += 1s;
        }
        return std::chrono::duration_cast<std::chrono::seconds>(now - start);
    }
};

TEST_F(ReopeningTest, TriesAtOnceAndThenLessAndLessOften) {
    EXPECT_TRUE(reopening.broke(now));
    std::vector<std::chrono::seconds> pauses;
    for (int attempt = 0; attempt < 9; ++attempt) {
        pauses.push_back(pause());
        reopening.tried(now);
    }
    EXPECT_THAT(pauses, ElementsAre(0s, 1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s));
}

TEST_F(ReopeningTest, WhatOpensAndBreaksAgainIsNoNewsAndKeepsItsPauses) {
    EXPECT_TRUE(reopening.broke(now));
    reopening.tried(now);
    EXPECT_FALSE(reopening.broke(now));
    EXPECT_EQ(pause(), 1s);
    reopening.tried(now);
    EXPECT_FALSE(reopening.broke(now));
    EXPECT_EQ(pause(), 2s);
}

TEST_F(ReopeningTest, WhatLastedBreaksAsIfForTheFirstTime) {
    reopening.broke(now);
    for (int attempt = 0; attempt < 5; ++attempt) {
        pause();
        reopening.tried(now);
    }
    now += Reopening::longestPause;
    EXPECT_TRUE(reopening.broke(now));
    EXPECT_EQ(pause(), 0s);
    reopening.tried(now);
    EXPECT_EQ(pause(), 1s);
}

} // namespace
