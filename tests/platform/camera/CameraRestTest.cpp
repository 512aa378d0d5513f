#include "tests/platform/camera/PipeWireCameraCheck.h"

#include <chrono>
#include <filesystem>
#include <sstream>
#include <string>

#include <unistd.h>

namespace {

using TestSupport::spinUntil;

/// How often this program's threads, but for the one that asks, have gone to sleep and come back.
long wakeUps() {
    long count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        if (task.path().filename() == std::to_string(gettid())) {
            continue;
        }
        std::istringstream status(TestSupport::readFile(task.path() / "status"));
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("voluntary_ctxt_switches:")) {
                count += std::stol(line.substr(line.find(':') + 1));
            }
        }
    }
    return count;
}

bool areWokenWithin(std::chrono::seconds time) {
    const auto before = wakeUps();
    return spinUntil([&] { return wakeUps() != before; }, time);
}

using CameraRestTest = TestSupport::PipeWireCameraCheck;

TEST_F(CameraRestTest, NobodyIsWokenForACameraThatNobodyLooksAt) {
    // Longer than any pause between two looks at a camera that is wanted.
    constexpr std::chrono::seconds longTime(15);
    const auto camera = plugIn("cam", "Camera", "yuyv");
    choose("cam");
    look();
    session->startRunning();
    ASSERT_TRUE(comesOn());
    EXPECT_TRUE(areWokenWithin(longTime));
    session->stopRunning();
    // The session manager puts the camera to rest a while later.
    EXPECT_TRUE(spinUntil([&] { return !areWokenWithin(longTime); }, 4 * longTime));
}

} // namespace
