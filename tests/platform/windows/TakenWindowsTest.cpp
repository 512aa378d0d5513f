#include "platform/linux/windows/TakenWindows.h"
#include "tests/support/MemoryUserDefaults.h"

#include <gmock/gmock.h>

#include <array>
#include <string>

namespace {

using LinuxPlatform::EarlierValue;
using LinuxPlatform::TakenWindow;
using LinuxPlatform::TakenWindows;
using LinuxPlatform::WindowId;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr WindowId large = 0xFFFF'FFFF'FFFF'FFFF;

struct TakenWindowsTest : testing::Test {
    TestSupport::MemoryUserDefaults disk;

    EarlierValue record(const std::string& session = "session") { return {disk, "windows", session}; }
};

TEST_F(TakenWindowsTest, WhatWasTakenIsKnownWithItsPlace) {
    TakenWindows taken;
    EXPECT_TRUE(taken.isEmpty());
    taken.take(std::array{TakenWindow{1, "left"}, TakenWindow{2, ""}});
    EXPECT_TRUE(taken.contains(1));
    EXPECT_EQ(taken.placeOf(1), "left");
    EXPECT_EQ(taken.placeOf(2), "");
    EXPECT_EQ(taken.placeOf(3), std::nullopt);
    EXPECT_FALSE(taken.isEmpty());
}

TEST_F(TakenWindowsTest, PlaceIsTheOneBeforeTheFirstTaking) {
    TakenWindows taken;
    taken.take(std::array{TakenWindow{1, "left"}});
    taken.take(std::array{TakenWindow{1, "where hidden windows are"}});
    EXPECT_EQ(taken.placeOf(1), "left");
    taken.forget(std::array<WindowId, 1>{1});
    taken.take(std::array{TakenWindow{1, "right"}});
    EXPECT_EQ(taken.placeOf(1), "right");
}

TEST_F(TakenWindowsTest, WhatIsBackOrGoneIsForgotten) {
    TakenWindows taken;
    taken.take(std::array{TakenWindow{1, ""}, TakenWindow{2, ""}, TakenWindow{3, ""}});
    taken.forget(std::array<WindowId, 2>{1, 9});
    taken.forget([](WindowId window) { return window == 2; });
    EXPECT_THAT(taken.all(), ElementsAre(TakenWindow{3, ""}));
}

TEST_F(TakenWindowsTest, NextRunInTheSessionKnowsWhatTheLastOneLeftBehind) {
    {
        TakenWindows taken(record());
        taken.take(std::array{TakenWindow{1, R"({"workspace": "1: web"})"}, TakenWindow{large, ""}});
    }
    TakenWindows taken(record());
    EXPECT_THAT(taken.all(),
                ElementsAre(TakenWindow{1, R"({"workspace": "1: web"})"}, TakenWindow{large, ""}));
    taken.forget(std::array{large});
    EXPECT_THAT(TakenWindows(record()).all(), ElementsAre(TakenWindow{1, R"({"workspace": "1: web"})"}));
}

TEST_F(TakenWindowsTest, NothingIsLeftInTheRecordWhenAllIsBack) {
    TakenWindows taken(record());
    taken.take(std::array{TakenWindow{1, "left"}});
    EXPECT_TRUE(disk.contains("windows"));
    taken.forget([](WindowId /*window*/) { return true; });
    EXPECT_FALSE(disk.contains("windows"));
}

TEST_F(TakenWindowsTest, WindowsOfAnotherSessionAreNone) {
    TakenWindows(record("yesterday")).take(std::array{TakenWindow{1, "left"}});
    EXPECT_THAT(TakenWindows(record("today")).all(), IsEmpty());
}

TEST_F(TakenWindowsTest, LinesThatMakeNoSenseAreSkipped) {
    disk.setString("windows", "session\nno number\n\n12\n-1 left\n99999999999999999999 left\n7 right");
    EXPECT_THAT(TakenWindows(record()).all(), ElementsAre(TakenWindow{7, "right"}));
}

} // namespace
