#include "platform/linux/screenwatch/PipeWireCaptureWatch.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/TemporaryFolder.h"

#include <QByteArray>
#include <QProcess>
#include <QString>

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace {

using LinuxPlatform::PipeWireCaptureWatch;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;
using namespace std::chrono_literals;

constexpr auto patience = 20s;

class PipeWireCaptureWatchTest : public testing::Test {
protected:
    std::unique_ptr<PipeWireCaptureWatch> watch_ = PipeWireCaptureWatch::open();
    TestSupport::TemporaryFolder folder_;
    int receivers_ = 0;

    void SetUp() override { ASSERT_TRUE(watch_); }

    static std::unique_ptr<ChildProcess> send(const std::string& name,
                                              const std::vector<std::string>& properties) {
        std::vector<std::string> command{VIDEO_STREAM, "send", name, "media.class=Video/Source"};
        command.insert(command.end(), properties.begin(), properties.end());
        return std::make_unique<ChildProcess>(command);
    }

    /// Receives the stream, once it is there; pictures have arrived when this returns.
    std::unique_ptr<ChildProcess> receive(const std::string& name) {
        EXPECT_TRUE(spinUntil([&] { return has(name); }, patience)) << name;
        const auto file = folder_.path() / ("pictures-" + std::to_string(++receivers_));
        auto receiver = std::make_unique<ChildProcess>(
            std::vector<std::string>{VIDEO_STREAM, "receive", name, file.string()});
        EXPECT_TRUE(spinUntil([&] { return TestSupport::readFile(file).size() > 3; }, patience)) << name;
        return receiver;
    }

    /// Whether a stream of that name is there.
    static bool has(const std::string& name) {
        QProcess process;
        process.start(QStringLiteral("pw-cli"), {QStringLiteral("list-objects"), QStringLiteral("Node")});
        process.waitForFinished();
        return process.readAllStandardOutput().contains(QByteArray::fromStdString('"' + name + '"'));
    }

    bool becomes(bool isCaptured) {
        return spinUntil([&] { return watch_->isScreenCaptured() == isCaptured; }, patience);
    }
};

TEST_F(PipeWireCaptureWatchTest, NobodyCasts) {
    EXPECT_FALSE(watch_->isScreenCaptured());
    EXPECT_TRUE(watch_->isConnected());
}

TEST_F(PipeWireCaptureWatchTest, CastCountsWhileItIsReceived) {
    const auto cast = send("xdg-desktop-portal-wlr", {});
    ASSERT_TRUE(spinUntil([&] { return has("xdg-desktop-portal-wlr"); }, patience));
    EXPECT_FALSE(watch_->isScreenCaptured());
    auto receiver = receive("xdg-desktop-portal-wlr");
    EXPECT_TRUE(becomes(true));
    receiver->end(SIGKILL);
    EXPECT_TRUE(becomes(false));
    receiver = receive("xdg-desktop-portal-wlr");
    EXPECT_TRUE(becomes(true));
    cast->end(SIGKILL);
    EXPECT_TRUE(becomes(false));
}

TEST_F(PipeWireCaptureWatchTest, CastThatBeganBeforeCounts) {
    watch_.reset();
    const auto cast = send("gnome-shell", {"media.class=Stream/Output/Video"});
    const auto receiver = receive("gnome-shell");
    // A busy daemon may be too slow once, but not each time.
    EXPECT_TRUE(spinUntil(
        [&] {
            watch_ = PipeWireCaptureWatch::open();
            return watch_->isScreenCaptured();
        },
        patience))
        << "the first question tells";
}

TEST_F(PipeWireCaptureWatchTest, CamerasInUseDoNotCount) {
    const auto camera = send("gnome-shell-camera", {"media.role=Camera"});
    const auto other = send("studio-camera", {});
    const auto cameraReceiver = receive("gnome-shell-camera");
    const auto otherReceiver = receive("studio-camera");
    for (int question = 0; question < 100; ++question) {
        EXPECT_FALSE(watch_->isScreenCaptured());
    }
    const auto cast = send("kwin_wayland", {});
    const auto receiver = receive("kwin_wayland");
    EXPECT_TRUE(becomes(true)) << "they do not hide one that does";
}

/// A daemon of the test's own, at a place where none is at first.
class PipeWireDaemonTest : public testing::Test {
protected:
    PipeWireDaemonTest() {
        std::filesystem::permissions(folder_.path(), std::filesystem::perms::owner_all);
        setenv("PIPEWIRE_RUNTIME_DIR", folder_.path().c_str(), 1);
    }
    ~PipeWireDaemonTest() override { unsetenv("PIPEWIRE_RUNTIME_DIR"); }

    std::unique_ptr<ChildProcess> start() {
        auto daemon = std::make_unique<ChildProcess>(std::vector<std::string>{"pipewire"});
        EXPECT_TRUE(
            spinUntil([&] { return std::filesystem::exists(folder_.path() / "pipewire-0"); }, patience));
        return daemon;
    }

    TestSupport::TemporaryFolder folder_;
};

TEST_F(PipeWireDaemonTest, IsFoundWhenItAppearsAndAgainWhenItIsBack) {
    const auto watch = PipeWireCaptureWatch::open();
    ASSERT_TRUE(watch);
    for (int question = 0; question < 100; ++question) {
        EXPECT_FALSE(watch->isScreenCaptured());
        EXPECT_FALSE(watch->isConnected());
    }
    for (int life = 0; life < 3; ++life) {
        const auto daemon = start();
        EXPECT_TRUE(spinUntil([&] { return !watch->isScreenCaptured() && watch->isConnected(); }, patience));
        daemon->end(SIGKILL);
        EXPECT_TRUE(spinUntil([&] { return !watch->isConnected(); }, patience));
        std::filesystem::remove(folder_.path() / "pipewire-0");
    }
    EXPECT_FALSE(watch->isScreenCaptured());
}

TEST_F(PipeWireDaemonTest, FrozenOneHoldsNobodyUp) {
    const auto daemon = start();
    ASSERT_EQ(kill(daemon->id(), SIGSTOP), 0);
    const auto watch = PipeWireCaptureWatch::open();
    ASSERT_TRUE(watch);
    const auto start = std::chrono::steady_clock::now();
    for (int question = 0; question < 100; ++question) {
        EXPECT_FALSE(watch->isScreenCaptured());
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
}

} // namespace
