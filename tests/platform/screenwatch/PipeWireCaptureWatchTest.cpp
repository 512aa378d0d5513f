#include "platform/linux/screenwatch/PipeWireCaptureWatch.h"

#include "platform/linux/screenwatch/CaptureRoads.h"
#include "platform/linux/screenwatch/ScreenWatch.h"

#include "tests/platform/system/UnixSocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RunningTime.h"
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
#include <optional>
#include <string>
#include <vector>

#include <sys/resource.h>

namespace {

using LinuxPlatform::PipeWireCaptureWatch;
using LinuxPlatform::SessionKind;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;
using namespace std::chrono_literals;

constexpr auto patience = 20s;
constexpr std::optional<bool> unknown;

/// Its time passes by hand.
class HandDrivenWatch {
public:
    HandDrivenWatch() { open(); }

    void open() {
        watch_.reset();
        watch_ = PipeWireCaptureWatch::open(log_, [this] { return now_; });
    }

    PipeWireCaptureWatch* operator->() const { return watch_.get(); }
    explicit operator bool() const { return watch_ != nullptr; }

    void pass(std::chrono::milliseconds time) { now_ += time; }
    const std::vector<std::string>& lines() const { return log_.lines; }

    /// A tenth of a second passes from one question to the next.
    bool becomes(std::optional<bool> isCaptured) {
        return spinUntil(
            [&] {
                pass(100ms);
                return watch_->isScreenCaptured() == isCaptured;
            },
            patience);
    }

private:
    TestSupport::RecordingLog log_;
    LinuxPlatform::Reopening::Clock::time_point now_{};
    std::unique_ptr<PipeWireCaptureWatch> watch_;
};

class PipeWireCaptureWatchTest : public testing::Test {
protected:
    HandDrivenWatch watch_;
    TestSupport::TemporaryFolder folder_;
    int receivers_ = 0;

    void SetUp() override {
        ASSERT_TRUE(watch_);
        // A busy daemon may be too slow for the first question.
        ASSERT_TRUE(becomes(false));
    }
    void TearDown() override { EXPECT_THAT(watch_.lines(), IsEmpty()) << "nothing broke"; }

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

    bool becomes(bool isCaptured) { return watch_.becomes(isCaptured); }
};

TEST_F(PipeWireCaptureWatchTest, NobodyCasts) {
    EXPECT_EQ(watch_->isScreenCaptured(), false);
    EXPECT_TRUE(watch_->isConnected());
}

TEST_F(PipeWireCaptureWatchTest, CastCountsWhileItIsReceived) {
    const auto cast = send("xdg-desktop-portal-wlr", {});
    ASSERT_TRUE(spinUntil([&] { return has("xdg-desktop-portal-wlr"); }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), false);
    auto receiver = receive("xdg-desktop-portal-wlr");
    EXPECT_TRUE(becomes(true));
    receiver->end(SIGKILL);
    EXPECT_TRUE(becomes(false));
    receiver = receive("xdg-desktop-portal-wlr");
    EXPECT_TRUE(becomes(true));
    cast->end(SIGKILL);
    EXPECT_TRUE(becomes(false));
}

TEST_F(PipeWireCaptureWatchTest, CastThatBeginsOrEndsIsToldWithoutAQuestion) {
    int news = 0;
    const auto observer = watch_->addNewsObserver([&] { ++news; });
    ASSERT_EQ(watch_->isScreenCaptured(), false);
    const auto cast = send("xdg-desktop-portal-wlr", {});
    auto receiver = receive("xdg-desktop-portal-wlr");
    EXPECT_TRUE(spinUntil([&] { return news == 1; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    receiver->end(SIGKILL);
    EXPECT_TRUE(spinUntil([&] { return news == 2; }, patience));
}

TEST_F(PipeWireCaptureWatchTest, CamerasInUseAreNoNews) {
    int news = 0;
    const auto observer = watch_->addNewsObserver([&] { ++news; });
    ASSERT_EQ(watch_->isScreenCaptured(), false);
    const auto camera = send("studio-camera", {});
    const auto cameraReceiver = receive("studio-camera");
    const auto cast = send("xdg-desktop-portal-wlr", {});
    auto castReceiver = receive("xdg-desktop-portal-wlr");
    EXPECT_TRUE(spinUntil([&] { return news == 1; }, patience));
    castReceiver->end(SIGKILL);
    // Were the camera's stream one of them, it would still be received.
    EXPECT_TRUE(spinUntil([&] { return news == 2; }, patience));
}

TEST_F(PipeWireCaptureWatchTest, CastThatPausesCountsForAWhile) {
    constexpr auto memory = LinuxPlatform::CaptureWatch::memory;
    int news = 0;
    const auto observer = watch_->addNewsObserver([&] { ++news; });
    const auto cast = send("xdg-desktop-portal-wlr", {});
    auto receiver = receive("xdg-desktop-portal-wlr");
    ASSERT_TRUE(spinUntil([&] { return news == 1; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    // Nobody asks for a while, and it goes on.
    watch_.pass(memory / 2);
    receiver->end(SIGKILL);
    ASSERT_TRUE(spinUntil([&] { return news == 2; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    watch_.pass(memory - 1s);
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    receiver = receive("xdg-desktop-portal-wlr");
    ASSERT_TRUE(spinUntil([&] { return news == 3; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    watch_.pass(memory - 1s);
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    receiver->end(SIGKILL);
    EXPECT_TRUE(becomes(false));
}

TEST_F(PipeWireCaptureWatchTest, CastThatBeganBeforeCounts) {
    const auto cast = send("gnome-shell", {"media.class=Stream/Output/Video"});
    const auto receiver = receive("gnome-shell");
    // A busy daemon may be too slow once, but not each time.
    EXPECT_TRUE(spinUntil(
        [&] {
            watch_.open();
            return watch_->isScreenCaptured() == true;
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
        EXPECT_EQ(watch_->isScreenCaptured(), false);
    }
    const auto cast = send("kwin_wayland", {});
    const auto receiver = receive("kwin_wayland");
    EXPECT_TRUE(becomes(true)) << "they do not hide one that does";
}

TEST_F(PipeWireCaptureWatchTest, ProgramsThatAreGoneBeforeTheyAreLookedAtBreakNothing) {
    ASSERT_TRUE(becomes(false));
    for (int visit = 0; visit < 10; ++visit) {
        // Nobody takes in meanwhile that the program comes and goes.
        EXPECT_FALSE(has("xdg-desktop-portal-wlr"));
        EXPECT_EQ(watch_->isScreenCaptured(), false);
    }
    const auto cast = send("xdg-desktop-portal-wlr", {});
    const auto receiver = receive("xdg-desktop-portal-wlr");
    while (watch_->isScreenCaptured() != true) {
        ASSERT_EQ(watch_->isScreenCaptured(), false) << "the daemon says what it has to say of those before";
        watch_.pass(100ms);
    }
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
            spinUntil([&] { return TestSupport::isListening(folder_.path() / "pipewire-0"); }, patience));
        return daemon;
    }

    TestSupport::TemporaryFolder folder_;
};

TEST_F(PipeWireDaemonTest, OneThatIsNotThereCastsNothing) {
    HandDrivenWatch watch;
    ASSERT_TRUE(watch);
    for (int question = 0; question < 100; ++question) {
        EXPECT_EQ(watch->isScreenCaptured(), false);
        EXPECT_FALSE(watch->isConnected());
    }
    const auto daemon = start();
    EXPECT_TRUE(
        spinUntil([&] { return watch->isScreenCaptured() == false && watch->isConnected(); }, patience));
    EXPECT_THAT(watch.lines(), IsEmpty());
}

TEST_F(PipeWireDaemonTest, OneThatBreaksOffLeavesNothingKnownUntilItIsBack) {
    HandDrivenWatch watch;
    ASSERT_TRUE(watch);
    for (int life = 0; life < 3; ++life) {
        const auto daemon = start();
        EXPECT_TRUE(watch.becomes(false));
        EXPECT_TRUE(watch->isConnected());
        // What breaks again at once is no news.
        watch.pass(LinuxPlatform::Reopening::longestPause);
        daemon->end(SIGKILL);
        EXPECT_TRUE(watch.becomes(unknown));
        EXPECT_FALSE(watch->isConnected());
        std::filesystem::remove(folder_.path() / "pipewire-0");
        for (auto time = 0s; time < LinuxPlatform::Reopening::longestPause - 1s; time += 1s) {
            EXPECT_EQ(watch->isScreenCaptured(), unknown);
            watch.pass(1s);
        }
    }
    EXPECT_THAT(watch.lines(), SizeIs(3));
}

TEST_F(PipeWireDaemonTest, OneThatStaysAwayIsGone) {
    HandDrivenWatch watch;
    ASSERT_TRUE(watch);
    for (int life = 0; life < 2; ++life) {
        auto daemon = start();
        ASSERT_TRUE(
            spinUntil([&] { return watch->isScreenCaptured() == false && watch->isConnected(); }, patience));
        watch.pass(LinuxPlatform::Reopening::longestPause);
        daemon->end(SIGKILL);
        ASSERT_TRUE(watch.becomes(unknown));
        watch.pass(LinuxPlatform::Reopening::longestPause);
        // The socket of one that was killed stays, and refuses.
        EXPECT_EQ(watch->isScreenCaptured(), unknown) << "it is missed for the first time";
        watch.pass(LinuxPlatform::Reopening::longestPause - 1ms);
        EXPECT_EQ(watch->isScreenCaptured(), unknown);
        watch.pass(1ms);
        EXPECT_EQ(watch->isScreenCaptured(), false);
        std::filesystem::remove(folder_.path() / "pipewire-0");
        EXPECT_EQ(watch->isScreenCaptured(), false);
    }
    EXPECT_THAT(watch.lines(), SizeIs(2)) << "of each that broke off";
}

TEST_F(PipeWireDaemonTest, FrozenOneHoldsNobodyUpAndLeavesNothingKnown) {
    const auto daemon = start();
    ASSERT_EQ(kill(daemon->id(), SIGSTOP), 0);
    HandDrivenWatch watch;
    ASSERT_TRUE(watch);
    const auto ask = [&] {
        for (int question = 0; question < 100; ++question) {
            EXPECT_EQ(watch->isScreenCaptured(), unknown);
        }
    };
    EXPECT_LT(TestSupport::runningTimeOf(ask), 5s);
    ASSERT_EQ(kill(daemon->id(), SIGCONT), 0);
    EXPECT_TRUE(watch.becomes(false));
}

TEST_F(PipeWireDaemonTest, PlaceThatCannotBeReachedLeavesNothingKnown) {
    const auto daemon = start();
    HandDrivenWatch watch;
    ASSERT_TRUE(watch);
    // No descriptor is left for a connection.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const auto answer = watch->isScreenCaptured();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(answer, unknown);
    EXPECT_THAT(watch.lines(), SizeIs(1));
    EXPECT_TRUE(watch.becomes(false));
}

/// What all roads of a session together tell.
class SessionRoads {
public:
    explicit SessionRoads(SessionKind kind)
        : watch_(LinuxPlatform::captureRoads(sessionOf(kind), log_)),
          isCaptured_(watch_.lookUp("CGSIsScreenWatcherPresent")) {}

    std::optional<bool> isCaptured() const { return isCaptured_(); }
    const std::vector<std::string>& lines() const { return log_.lines; }

private:
    static LinuxPlatform::SessionEnvironment sessionOf(SessionKind kind) {
        LinuxPlatform::SessionEnvironment session;
        session.kind = kind;
        return session;
    }

    TestSupport::RecordingLog log_;
    LinuxPlatform::ScreenWatch watch_;
    Platform::ScreenWatcherProbe::Query isCaptured_;
};

TEST_F(PipeWireDaemonTest, WithoutOneNothingIsKnownWhereThereIsNoOtherRoad) {
    for (const auto kind : {SessionKind::wayland, SessionKind::waylandWithX}) {
        const SessionRoads roads(kind);
        EXPECT_EQ(roads.isCaptured(), unknown);
        EXPECT_EQ(roads.isCaptured(), unknown);
        const auto daemon = start();
        EXPECT_TRUE(spinUntil([&] { return roads.isCaptured() == false; }, patience));
        EXPECT_THAT(roads.lines(), IsEmpty());
        daemon->end(SIGTERM);
        std::filesystem::remove(folder_.path() / "pipewire-0");
    }
}

TEST_F(PipeWireDaemonTest, WithoutOneTheXServerTellsEnough) {
    const SessionRoads roads(SessionKind::x11);
    EXPECT_EQ(roads.isCaptured(), false);
    EXPECT_THAT(roads.lines(), IsEmpty());
}

TEST_F(PipeWireDaemonTest, XServerThatCannotBeReachedStaysUnknown) {
    const std::string display = std::getenv("DISPLAY");
    setenv("DISPLAY", "unix/no/such/server:0", 1);
    const SessionRoads roads(SessionKind::x11);
    EXPECT_EQ(roads.isCaptured(), unknown);
    setenv("DISPLAY", display.c_str(), 1);
    EXPECT_EQ(roads.isCaptured(), unknown) << "it is only asked again";
    EXPECT_THAT(roads.lines(), SizeIs(1));
}

} // namespace
