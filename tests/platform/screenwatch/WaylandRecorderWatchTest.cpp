#include "platform/linux/screenwatch/WaylandRecorderWatch.h"

#include "tests/platform/system/ProcFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::ProcessTable;
using LinuxPlatform::WaylandRecorderWatch;

struct WaylandRecorderWatchTest : testing::Test {
    void run(const std::string& executable, const std::vector<std::string>& environment) {
        processes.add(++last, {.executable = executable, .environment = environment});
    }

    TestSupport::TemporaryFolder folder;
    TestSupport::ProcFolder processes{folder.path()};
    std::uint32_t last = 100;
    WaylandRecorderWatch watch{"/run/user/1000/wayland-0", ProcessTable(folder.path())};
};

TEST_F(WaylandRecorderWatchTest, RecorderOfThisSessionCounts) {
    run("/usr/bin/foot", {"XDG_RUNTIME_DIR=/run/user/1000"});
    EXPECT_EQ(watch.isScreenCaptured(), false);
    run("/usr/bin/wf-recorder", {"XDG_RUNTIME_DIR=/run/user/1000", "WAYLAND_DISPLAY=wayland-0"});
    EXPECT_EQ(watch.isScreenCaptured(), true);
}

TEST_F(WaylandRecorderWatchTest, DisplayMayBeAPathOrTheUsualOne) {
    run("/home/ann/bin/wl-screenrec", {"WAYLAND_DISPLAY=/run/user/1000/wayland-0"});
    EXPECT_EQ(watch.isScreenCaptured(), true);
    WaylandRecorderWatch other("/run/user/1001/wayland-0", ProcessTable(folder.path()));
    EXPECT_EQ(other.isScreenCaptured(), false);
    run("/usr/bin/wf-recorder", {"XDG_RUNTIME_DIR=/run/user/1001"});
    EXPECT_EQ(other.isScreenCaptured(), true);
}

TEST_F(WaylandRecorderWatchTest, OtherSessionsAndOtherProgramsDoNot) {
    run("/usr/bin/wf-recorder", {"XDG_RUNTIME_DIR=/run/user/1000", "WAYLAND_DISPLAY=wayland-1"});
    run("/usr/bin/grim", {"XDG_RUNTIME_DIR=/run/user/1000"});
    run("/usr/bin/vi", {"XDG_RUNTIME_DIR=/run/user/1000", "NOTE=wf-recorder"});
    run("", {});
    EXPECT_EQ(watch.isScreenCaptured(), false);
}

} // namespace
