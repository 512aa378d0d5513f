#include "tests/platform/camera/PipeWireCameraCheck.h"
#include "tests/support/RunningTime.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using TestSupport::runningTimeOf;
using TestSupport::showsBars;
using TestSupport::spinUntil;
using TestSupport::VirtualCamera;

std::size_t residentMegabytes() {
    std::ifstream file("/proc/self/statm");
    std::size_t all = 0;
    std::size_t resident = 0;
    file >> all >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) >> 20U;
}

std::ptrdiff_t entries(const char* folder) {
    const std::filesystem::directory_iterator files(folder);
    return std::distance(begin(files), end(files));
}

std::string openFiles() {
    std::string names;
    for (const auto& file : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        names += std::filesystem::read_symlink(file, error).string() + "\n";
    }
    return names;
}

/// Cameras as no honest one is. Whatever they do, the end comes within a second and leaves nothing behind.
struct HostileCamerasTest : TestSupport::PipeWireCameraCheck {
    /// Those that the daemon hands over for a link that has gone meanwhile are nobody's in PipeWire 0.3.65,
    /// and stay open.
    bool mayLeaveEvents = false;
    std::ptrdiff_t filesBefore = 0;
    std::ptrdiff_t threadsBefore = 0;

    void SetUp() override {
        PipeWireCameraCheck::SetUp();
        filesBefore = entries("/proc/self/fd");
        threadsBefore = entries("/proc/self/task");
    }

    void TearDown() override {
        EXPECT_LT(runningTimeOf([&] { session->stopRunning(); }), std::chrono::seconds(1));
        if (!mayLeaveEvents) {
            EXPECT_TRUE(spinUntil([&] { return entries("/proc/self/fd") <= filesBefore; }, patience))
                << filesBefore << " open files before, now " << openFiles();
        }
        // One for the work that the session has been given.
        EXPECT_LE(entries("/proc/self/task"), threadsBefore + 1);
    }

    std::unique_ptr<VirtualCamera> watch(const std::string& formats,
                                         const std::vector<std::string>& options) {
        auto camera = plugIn("cam", "Camera", formats, options);
        choose("cam");
        look();
        session->startRunning();
        return camera;
    }

    static long linesOf(const VirtualCamera& camera, std::string_view text) {
        const auto log = camera.log();
        long count = 0;
        for (auto at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
            ++count;
        }
        return count;
    }
};

TEST_F(HostileCamerasTest, AFormatThatChangesThriceASecondIsFollowed) {
    const auto camera = watch("yuyv", {"flapping"});
    ASSERT_TRUE(comesOn());
    const auto changes = [&] { return linesOf(*camera, "yuyv "); };
    ASSERT_TRUE(spinUntil([&] { return changes() >= 6; }, patience)) << camera->log();
    const auto before = residentMegabytes();
    const auto soFar = changes();
    ASSERT_TRUE(spinUntil([&] { return changes() >= soFar + 30; }, std::chrono::seconds(60)));
    EXPECT_LE(residentMegabytes(), before + 16);
    EXPECT_TRUE(comesOn());
}

TEST_F(HostileCamerasTest, AThousandFormatsAreLookedThrough) {
    const auto camera = watch("yuyv", {"thousand"});
    ASSERT_TRUE(comesOn());
    EXPECT_TRUE(showsBars(*preview->picture()));
}

TEST_F(HostileCamerasTest, ACameraThatGoesBetweenTheQuestionAndTheLinkStaysDark) {
    mayLeaveEvents = true;
    for (int turn = 0; turn < 10; ++turn) {
        const auto camera = plugIn("cam", "Camera", "yuyv");
        choose("cam");
        look();
        camera->unplug();
        EXPECT_LT(runningTimeOf([&] { session->startRunning(); }), std::chrono::seconds(1));
        ASSERT_TRUE(spinUntil([&] { return services.devices().empty(); }, patience));
        EXPECT_EQ(preview->picture(), nullptr);
        session->stopRunning();
    }
    const auto camera = watch("yuyv", {});
    EXPECT_TRUE(comesOn());
}

TEST_F(HostileCamerasTest, CamerasThatComeAndGoWhileTheyAreAskedLeaveNothing) {
    for (int turn = 0; turn < 30; ++turn) {
        const VirtualCamera camera(folder, "cam" + std::to_string(turn), "Camera", "yuyv");
        services.devices();
    }
    EXPECT_TRUE(spinUntil([&] { return services.devices().empty(); }, patience));
}

TEST_F(HostileCamerasTest, APictureOfOnePixelIsShown) {
    const auto camera = watch("jpeg", {"size=1x1"});
    ASSERT_TRUE(comesOn());
    EXPECT_EQ(preview->picture()->width, 1);
    EXPECT_EQ(preview->picture()->height, 1);
}

TEST_F(HostileCamerasTest, AnEnormousPictureIsShownAndForgotten) {
    const auto before = residentMegabytes();
    const auto camera = watch("yuyv", {"size=8192x8192", "rate=2"});
    ASSERT_TRUE(spinUntil([&] { return preview->picture() != nullptr; }, std::chrono::seconds(60)))
        << camera->log();
    EXPECT_TRUE(showsBars(*preview->picture()));
    session->stopRunning();
    EXPECT_TRUE(spinUntil([&] { return residentMegabytes() <= before + 16; }, patience)) << before;
}

TEST_F(HostileCamerasTest, RowsThatGoBackwardsHarmNobody) {
    const auto camera = watch("yuyv", {"negative"});
    ASSERT_TRUE(spinUntil(
        [&] { return preview->picture() != nullptr || session->interruption().has_value(); }, patience));
}

TEST_F(HostileCamerasTest, PlanesInThreeBuffersAreOnePicture) {
    const auto camera = watch("planar", {"size=640x480"});
    ASSERT_TRUE(comesOn());
    EXPECT_TRUE(showsBars(*preview->picture()));
}

TEST_F(HostileCamerasTest, ASlowCameraIsGivenTheTimeThatItNeeds) {
    const auto fifo = folder.path() / "ready";
    ASSERT_EQ(mkfifo(fifo.c_str(), S_IRUSR | S_IWUSR), 0);
    std::fstream ready(fifo);
    const auto camera = watch("yuyv", {"ready=" + fifo.string()});
    ASSERT_TRUE(spinUntil([&] { return session->interruption().has_value(); }, patience)) << "it is said";
    // Another link would want another one.
    ready.put('!').flush();
    EXPECT_TRUE(comesOn()) << camera->log();
    EXPECT_TRUE(spinUntil([&] { return !session->interruption(); }, patience));
    EXPECT_EQ(linesOf(*camera, "yuyv "), 1);
}

TEST_F(HostileCamerasTest, ACameraThatMustBePutToRestFirstReturns) {
    const auto camera = watch("yuyv", {"stuck"});
    ASSERT_TRUE(comesOn());
    ASSERT_TRUE(goesDark());
    EXPECT_TRUE(spinUntil([&] { return preview->picture() != nullptr; }, std::chrono::seconds(40)));
    EXPECT_GE(linesOf(*camera, "yuyv "), 2) << "it was put to rest";
}

/// Stands still until it is let go of.
class FrozenProcess {
public:
    explicit FrozenProcess(pid_t process) : process_(process) { kill(process_, SIGSTOP); }
    FrozenProcess(const FrozenProcess&) = delete;
    FrozenProcess& operator=(const FrozenProcess&) = delete;
    ~FrozenProcess() { kill(process_, SIGCONT); }

private:
    pid_t process_;
};

TEST_F(HostileCamerasTest, AFrozenDaemonLeavesDarknessAndHoldsUpNobody) {
    const auto camera = watch("yuyv", {});
    ASSERT_TRUE(comesOn());
    const std::filesystem::path pids = std::getenv("VIRTUAL_DESKTOP_PIDS");
    {
        // Most cameras are driven by the daemon itself.
        const FrozenProcess daemon(std::stoi(TestSupport::readFile(pids / "pipewire")));
        camera->signal(SIGSTOP);
        EXPECT_TRUE(goesDark());
        EXPECT_EQ(session->interruption(), Platform::CaptureInterruption::noPictures);
        for (int turn = 0; turn < 3; ++turn) {
            const auto restart = [&] {
                session->stopRunning();
                services.devices();
                session->startRunning();
            };
            EXPECT_LT(runningTimeOf(restart), std::chrono::seconds(1)) << turn;
        }
    }
    camera->signal(SIGCONT);
    EXPECT_TRUE(comesOn());
}

TEST_F(HostileCamerasTest, AHundredAndTwentyPicturesASecondAreNotTooMany) {
    const auto camera = watch("yuyv", {"size=640x480", "rate=120"});
    ASSERT_TRUE(comesOn());
    const auto before = residentMegabytes();
    const auto soFar = pictures;
    ASSERT_TRUE(spinUntil([&] { return pictures >= soFar + 240; }, std::chrono::seconds(60)));
    EXPECT_LE(residentMegabytes(), before + 16);
}

} // namespace
