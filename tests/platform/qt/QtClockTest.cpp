#include "platform/qt/QtUuidSource.h"
#include "platform/qt/QtWallClock.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <ctime>

namespace {

TEST(QtWallClock, WritesLocalTimeWithDots) {
    setenv("TZ", "Asia/Kolkata", 1);
    tzset();
    QtPlatform::QtWallClock clock;
    // 2026-03-01 03:35:07 UTC.
    const auto moment = std::chrono::system_clock::from_time_t(1772336107);
    EXPECT_EQ(clock.localTimestamp(moment), "2026-03-01 09.05.07");
}

TEST(QtWallClock, GoesWithTheSystemsClock) {
    QtPlatform::QtWallClock clock;
    const auto before = std::chrono::system_clock::now();
    const auto now = clock.now();
    EXPECT_GE(now, before);
    EXPECT_LE(now, std::chrono::system_clock::now());
}

TEST(QtUuidSource, NeverRepeats) {
    QtPlatform::QtUuidSource uuids;
    const auto first = uuids.makeUuid();
    EXPECT_THAT(first, testing::MatchesRegex("[0-9A-F]+-[0-9A-F]+-4[0-9A-F]+-[0-9A-F]+-[0-9A-F]+"));
    EXPECT_EQ(first.size(), 36U);
    EXPECT_NE(uuids.makeUuid(), first);
}

} // namespace
