#include "platform/linux/screenwatch/X11CaptureWatch.h"
#include "platform/linux/screenwatch/ScreenReads.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/X11TestClient.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>

#include <xcb/res.h>

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using LinuxPlatform::X11CaptureWatch;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;
using namespace std::chrono_literals;

/// Beyond what the rule needs, for a machine that is busy.
constexpr auto patience = 20s;
/// Well before a capture that merely pauses is forgotten.
constexpr auto atOnce = LinuxPlatform::ScreenReads::memory / 2;

class X11CaptureWatchTest : public testing::Test {
protected:
    TestSupport::X11TestClient client_;
    const std::uint32_t otherClients_ = clients();
    std::unique_ptr<X11CaptureWatch> watch_ = X11CaptureWatch::open();

    void SetUp() override { ASSERT_TRUE(watch_); }

    /// The server takes note of a program's end later than the program's parent: the next test must not.
    void TearDown() override {
        watch_.reset();
        EXPECT_TRUE(spinUntil([&] { return clients() <= otherClients_; }, patience));
    }

    /// How many connections the server has.
    std::uint32_t clients() const {
        const LinuxPlatform::XcbPointer<xcb_res_query_clients_reply_t> reply(
            xcb_res_query_clients_reply(client_.get(), xcb_res_query_clients(client_.get()), nullptr));
        return reply ? reply->num_clients : 0;
    }

    int screenWidth() const {
        const LinuxPlatform::XcbPointer<xcb_get_geometry_reply_t> reply(
            xcb_get_geometry_reply(client_.get(), xcb_get_geometry(client_.get(), client_.root()), nullptr));
        return reply ? reply->width : 0;
    }

    std::unique_ptr<ChildProcess> read(const std::string& name, const std::string& kind,
                                       const std::vector<std::string>& area, const std::string& period,
                                       const std::vector<std::string>& options = {}) const {
        // Another test's reader may have had the name.
        xcb_delete_property(client_.get(), client_.root(), client_.atom(name));
        client_.sync();
        std::vector<std::string> command{SCREEN_READER, name, kind};
        command.insert(command.end(), area.begin(), area.end());
        command.push_back(period);
        command.insert(command.end(), options.begin(), options.end());
        return std::make_unique<ChildProcess>(command);
    }

    /// How often the reader of that name has read.
    std::uint32_t count(const std::string& name) const {
        const auto numbers = client_.numbers(client_.root(), name);
        return numbers.empty() ? 0 : numbers.front();
    }

    /// Asks several times a second until the answer is that.
    bool becomes(bool isCaptured, std::chrono::milliseconds deadline = patience) {
        QElapsedTimer sinceLast;
        return spinUntil(
            [&] {
                if (sinceLast.isValid() && sinceLast.elapsed() < 200) {
                    return false;
                }
                sinceLast.start();
                return watch_->isScreenCaptured() == isCaptured;
            },
            deadline);
    }

    /// Lives through what happens meanwhile, without asking.
    static void pass(std::chrono::milliseconds duration) {
        spinUntil([] { return false; }, duration);
    }

    const std::vector<std::string> whole_{"0", "0", "1280", "800"};
};

TEST_F(X11CaptureWatchTest, NobodyReadsAnIdleDesktop) {
    EXPECT_FALSE(watch_->isScreenCaptured());
}

TEST_F(X11CaptureWatchTest, CaptureIsSeenByTheNextPollAndItsEndAtOnce) {
    const auto reader = read("RECORDER", "image", whole_, "66");
    // For as long as from one poll to the next.
    ASSERT_TRUE(spinUntil([&] { return count("RECORDER") > 45; }, patience));
    EXPECT_TRUE(watch_->isScreenCaptured());
    reader->end(SIGKILL);
    EXPECT_TRUE(becomes(false, atOnce));
}

TEST_F(X11CaptureWatchTest, CaptureByCopiesIsSeenFromItsFirstCopy) {
    // What browsers do: nothing of theirs is there before the capture begins.
    const auto reader = read("BROWSER", "copy", whole_, "200");
    ASSERT_TRUE(spinUntil([&] { return count("BROWSER") > 15; }, patience));
    EXPECT_TRUE(watch_->isScreenCaptured()) << "the first poll tells";
}

TEST_F(X11CaptureWatchTest, CaptureThatBeganBeforeIsSeen) {
    watch_.reset();
    const auto copying = read("EARLY", "copy", whole_, "100");
    ASSERT_TRUE(spinUntil([&] { return count("EARLY") > 0; }, patience));
    watch_ = X11CaptureWatch::open();
    const auto before = count("EARLY");
    ASSERT_TRUE(spinUntil([&] { return count("EARLY") > before + 30; }, patience));
    EXPECT_TRUE(watch_->isScreenCaptured());
}

/// Makes the screen smaller, and whole again at the end.
class SmallScreen {
public:
    SmallScreen() { resize("640x480"); }
    ~SmallScreen() { resize("1280x800"); }
    SmallScreen(const SmallScreen&) = delete;
    SmallScreen& operator=(const SmallScreen&) = delete;

private:
    // It says that it failed, since no mode of the output is that small.
    static void resize(const std::string& size) { ChildProcess({"xrandr", "--fb", size}).succeeds(); }
};

TEST_F(X11CaptureWatchTest, CaptureOfAMonitorThatCameLaterIsSeen) {
    watch_.reset();
    {
        const SmallScreen small;
        watch_ = X11CaptureWatch::open();
        ASSERT_EQ(screenWidth(), 640);
    }
    ASSERT_EQ(screenWidth(), 1280);
    const auto reader = read("RECORDER", "image", {"640", "0", "640", "800"}, "66");
    EXPECT_TRUE(becomes(true));
}

TEST_F(X11CaptureWatchTest, WhoFollowsChangesIsSeenByLittle) {
    const auto reader = read("FOLLOWER", "image", {"5", "5", "20", "10"}, "400", {"damage"});
    EXPECT_TRUE(becomes(true));
}

TEST_F(X11CaptureWatchTest, CaptureOfACopyByAClientThatWasNoisyBeforeIsSeen) {
    const auto reader = read("NOISY", "copied", whole_, "100", {"noisy"});
    // Not in the event loop, where the watch would take in the copies by itself.
    const QDeadlineTimer deadline(patience);
    while (client_.numbers(client_.root(), "NOISY").empty()) {
        ASSERT_FALSE(deadline.hasExpired());
        std::this_thread::sleep_for(1ms);
    }
    // Its copies are looked into, and recorded no more.
    const auto before = watch_->roundTrips();
    ASSERT_TRUE(becomes(false));
    EXPECT_EQ(watch_->roundTrips(), before + 1);
    client_.setNumbers(client_.root(), "GO", XCB_ATOM_CARDINAL, std::array{1U});
    EXPECT_TRUE(becomes(true));
    xcb_delete_property(client_.get(), client_.root(), client_.atom("GO"));
    client_.sync();
}

TEST_F(X11CaptureWatchTest, InnocentReadersAreNone) {
    const std::vector<std::string> small{"100", "100", "200", "150"};
    std::vector<std::unique_ptr<ChildProcess>> readers;
    const std::vector<std::string> names{"PICKER",       "MAGNIFIER", "SCREENSHOTS",
                                         "ROOTSCROLLER", "OWNER",     "COMPOSITOR"};
    readers.push_back(read(names[0], "image", {"300", "300", "9", "9"}, "50"));
    readers.push_back(read(names[1], "image", small, "50", {"moves"}));
    readers.push_back(read(names[2], "image", whole_, "500", {"reconnects"}));
    readers.push_back(read(names[3], "scroll", whole_, "100"));
    readers.push_back(read(names[4], "own", whole_, "100"));
    readers.push_back(read(names[5], "image", whole_, "100", {"damage", "compositor"}));
    TestSupport::X11TestClient self;
    QElapsedTimer time;
    time.start();
    int answers = 0;
    const auto haveAllRead = [&] {
        for (const auto& name : names) {
            if (count(name) < 8) {
                return false;
            }
        }
        return true;
    };
    const bool isDone = spinUntil(
        [&] {
            xcb_get_image_unchecked(self.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, self.root(), 0, 0, 1280, 800, ~0U);
            self.sync();
            EXPECT_FALSE(watch_->isScreenCaptured()) << "after " << time.elapsed() << " ms";
            ++answers;
            return (time.elapsed() > 5000 && haveAllRead()) || testing::Test::HasFailure();
        },
        patience);
    EXPECT_TRUE(isDone) << "each reader has read";
    EXPECT_GT(answers, 10);
    const auto recorder = read("RECORDER", "image", whole_, "100");
    EXPECT_TRUE(becomes(true)) << "they do not hide one that does";
}

TEST_F(X11CaptureWatchTest, IdleDesktopCostsNothing) {
    ASSERT_FALSE(watch_->isScreenCaptured());
    const auto roundTrips = watch_->roundTrips();
    const auto wakeUps = watch_->wakeUps();
    pass(5500ms);
    EXPECT_EQ(watch_->wakeUps(), wakeUps);
    for (int poll = 0; poll < 20; ++poll) {
        EXPECT_FALSE(watch_->isScreenCaptured());
    }
    EXPECT_EQ(watch_->roundTrips(), roundTrips) << "a poll asks the server nothing";
}

TEST_F(X11CaptureWatchTest, CaptureCostsOneRoundTripAPollAndNoWakeUp) {
    const auto reader = read("RECORDER", "image", whole_, "66");
    ASSERT_TRUE(becomes(true));
    const auto wakeUps = watch_->wakeUps();
    const auto reads = count("RECORDER");
    ASSERT_TRUE(spinUntil([&] { return count("RECORDER") > reads + 20; }, patience));
    const auto roundTrips = watch_->roundTrips();
    EXPECT_TRUE(watch_->isScreenCaptured());
    EXPECT_EQ(watch_->roundTrips(), roundTrips + 1);
    EXPECT_EQ(watch_->wakeUps(), wakeUps);
}

TEST_F(X11CaptureWatchTest, ReadsThatNobodyAsksForAreTakenInNowAndThen) {
    const auto reader = read("RECORDER", "image", whole_, "20");
    const auto wakeUps = watch_->wakeUps();
    EXPECT_TRUE(spinUntil([&] { return watch_->wakeUps() >= wakeUps + 2; }, patience));
    EXPECT_LE(watch_->wakeUps(), wakeUps + 3);
    EXPECT_TRUE(watch_->isScreenCaptured());
}

TEST_F(X11CaptureWatchTest, ThousandCapturesThatComeAndGoLeaveNothing) {
    for (int connection = 0; connection < 1000; ++connection) {
        TestSupport::X11TestClient passing;
        xcb_get_image_unchecked(passing.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, passing.root(), 0, 0, 1280, 800,
                                ~0U);
        if (connection % 10 == 0) {
            passing.sync();
            EXPECT_FALSE(watch_->isScreenCaptured());
        }
    }
    EXPECT_TRUE(becomes(false));
    const auto roundTrips = watch_->roundTrips();
    EXPECT_FALSE(watch_->isScreenCaptured());
    EXPECT_EQ(watch_->roundTrips(), roundTrips);
    const auto recorder = read("RECORDER", "image", whole_, "100");
    EXPECT_TRUE(becomes(true));
}

} // namespace
