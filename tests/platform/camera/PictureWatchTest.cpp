#include "platform/linux/camera/PictureWatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

namespace {

using LinuxPlatform::PictureWatch;
using namespace std::chrono_literals;

struct PictureWatchTest : testing::Test {
    PictureWatch watch;
    PictureWatch::Clock::time_point now;

    /// The pauses before the camera is opened again, and how long it is then waited for.
    struct Attempt {
        PictureWatch::Time pause;
        PictureWatch::Time patience;

        bool operator==(const Attempt&) const = default;
    };

    std::vector<Attempt> silentAttempts(int count) {
        std::vector<Attempt> attempts;
        for (int attempt = 0; attempt < count; ++attempt) {
            const auto pause = watch.pause();
            watch.onOpened(now);
            attempts.push_back({pause, watch.left(now)});
        }
        return attempts;
    }
};

TEST_F(PictureWatchTest, ThreeSecondsWithoutAPictureAreTooLong) {
    watch.onOpened(now);
    watch.onPicture(now += 1s);
    EXPECT_EQ(watch.left(now), 3s);
    EXPECT_EQ(watch.left(now + 2999ms), 1ms);
    EXPECT_EQ(watch.left(now + 3s), 0ms);
    EXPECT_LT(watch.left(now + 4s), 0ms);
}

TEST_F(PictureWatchTest, ASilentCameraIsOpenedEverMoreSeldomAndGivenEverMoreTime) {
    watch.onOpened(now);
    EXPECT_EQ(watch.left(now), 3s);
    EXPECT_EQ(silentAttempts(4), (std::vector<Attempt>{{500ms, 6s}, {6s, 12s}, {6s, 12s}, {6s, 12s}}));
}

TEST_F(PictureWatchTest, ACameraMayBeGivenMoreTimeWhileItIsOpen) {
    watch.onOpened(now);
    watch.giveMoreTime();
    EXPECT_EQ(watch.left(now + 3s), 3s);
    watch.giveMoreTime();
    watch.giveMoreTime();
    EXPECT_EQ(watch.left(now + 12s), 0ms) << "but no more than that";
}

TEST_F(PictureWatchTest, APictureMakesUpForEarlierSilence) {
    watch.onOpened(now);
    silentAttempts(4);
    watch.onPicture(now);
    EXPECT_EQ(silentAttempts(1), (std::vector<Attempt>{{500ms, 6s}}));
}

} // namespace
