#include "platform/linux/screenwatch/WaylandRecorderWatch.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

using LinuxPlatform::WaylandRecorderWatch;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

/// Real programs that get at the screen by the protocols of wlroots.
struct WaylandRecordersTest : testing::Test {
    std::uintmax_t sizeOf(const std::string& file) const {
        std::error_code error;
        const auto size = std::filesystem::file_size(folder.path() / file, error);
        return error ? 0 : size;
    }

    std::string path(const std::string& file) const { return (folder.path() / file).string(); }

    TestSupport::TemporaryFolder folder;
    WaylandRecorderWatch watch{std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) /
                               std::getenv("WAYLAND_DISPLAY")};
};

TEST_F(WaylandRecordersTest, WfRecorderCountsAsLongAsItRuns) {
    EXPECT_EQ(watch.isScreenCaptured(), false);
    ChildProcess recorder({"wf-recorder", "--no-damage", "--file", path("film.mkv")});
    EXPECT_TRUE(spinUntil([&] { return watch.isScreenCaptured() == true; }));
    // With the first picture.
    EXPECT_TRUE(spinUntil([&] { return std::filesystem::exists(path("film.mkv")); }));
    EXPECT_EQ(watch.isScreenCaptured(), true);
    recorder.end(SIGINT);
    EXPECT_GT(sizeOf("film.mkv"), 0);
    EXPECT_EQ(watch.isScreenCaptured(), false);
}

TEST_F(WaylandRecordersTest, PictureThatGrimTakesDoesNot) {
    ChildProcess photographer({"grim", path("picture.png")});
    EXPECT_EQ(watch.isScreenCaptured(), false);
    EXPECT_TRUE(photographer.succeeds());
    EXPECT_GT(sizeOf("picture.png"), 0);
}

} // namespace
