#include "platform/linux/screenwatch/X11CaptureWatch.h"
#include "platform/linux/screenwatch/ScreenReads.h"

#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/X11TestClient.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>

#include <xcb/record.h>
#include <xcb/res.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include <sys/socket.h>

namespace {

using LinuxPlatform::X11CaptureWatch;
using LinuxPlatform::XcbPointer;
using testing::SizeIs;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;
using namespace std::chrono_literals;

/// Beyond what the rule needs, for a machine that is busy.
constexpr auto patience = 20s;
/// Well before a capture that merely pauses is forgotten.
constexpr auto atOnce = LinuxPlatform::ScreenReads::memory / 2;

/// The sockets of this process, in their order.
std::vector<int> sockets() {
    std::vector<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry.path(), error).string().starts_with("socket:")) {
            found.push_back(std::stoi(entry.path().filename()));
        }
    }
    std::ranges::sort(found);
    return found;
}

class X11CaptureWatchTest : public testing::Test {
protected:
    TestSupport::RecordingLog log_;
    TestSupport::X11TestClient client_;
    const std::uint32_t otherClients_ = clients();
    /// Passes by hand. It matters only to a watch that has to begin again.
    LinuxPlatform::Reopening::Clock::time_point time_{};
    std::unique_ptr<X11CaptureWatch> watch_ = open();
    int news_ = 0;

    void SetUp() override { ASSERT_TRUE(watch_); }

    /// The server takes note of a program's end later than the program's parent: the next test must not.
    void TearDown() override {
        watch_.reset();
        EXPECT_TRUE(spinUntil([&] { return clients() <= otherClients_; }, patience));
    }

    std::unique_ptr<X11CaptureWatch> open() {
        return X11CaptureWatch::open(log_, [this] { return time_; });
    }

    Platform::Subscription countNews() {
        return watch_->addNewsObserver([this] { ++news_; });
    }

    /// How many connections the server has.
    std::uint32_t clients() const {
        const auto reply = clientList();
        return reply ? reply->num_clients : 0;
    }

    XcbPointer<xcb_res_query_clients_reply_t> clientList() const {
        return XcbPointer<xcb_res_query_clients_reply_t>(
            xcb_res_query_clients_reply(client_.get(), xcb_res_query_clients(client_.get()), nullptr));
    }

    /// By which the watch is told who reads; absent when there is none. It is switched off on the way: there
    /// is no other way to find it.
    std::optional<xcb_record_context_t> endRecording() const {
        constexpr std::uint32_t someIdentifiers = 32;
        const auto reply = clientList();
        const std::span list(xcb_res_query_clients_clients(reply.get()),
                             static_cast<std::size_t>(xcb_res_query_clients_clients_length(reply.get())));
        for (const auto& entry : list) {
            for (std::uint32_t number = 0; number < someIdentifiers; ++number) {
                const auto context = entry.resource_base | number;
                const XcbPointer<xcb_generic_error_t> error(xcb_request_check(
                    client_.get(), xcb_record_disable_context_checked(client_.get(), context)));
                if (!error) {
                    return context;
                }
            }
        }
        return std::nullopt;
    }

    /// What has to happen after the watch was told nothing more.
    void checkThatItBeginsAgain() {
        EXPECT_TRUE(becomes(std::nullopt));
        EXPECT_THAT(log_.lines, SizeIs(1));
        auto reader = read("RECORDER", "image", whole_, "66");
        EXPECT_TRUE(becomes(true));
        reader->end(SIGKILL);
        EXPECT_TRUE(becomes(std::nullopt, atOnce)) << "others may have begun before, and read seldom";
        time_ += LinuxPlatform::CaptureWatch::memory;
        EXPECT_EQ(watch_->isScreenCaptured(), false);
        reader = read("RECORDER", "image", whole_, "66");
        EXPECT_TRUE(becomes(true));
        EXPECT_THAT(log_.lines, SizeIs(1));
    }

    int screenWidth() const {
        const XcbPointer<xcb_get_geometry_reply_t> reply(
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
    bool becomes(std::optional<bool> isCaptured, std::chrono::milliseconds deadline = patience) {
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
    EXPECT_EQ(watch_->isScreenCaptured(), false);
}

TEST_F(X11CaptureWatchTest, CaptureIsSeenByTheNextPollAndItsEndAtOnce) {
    const auto reader = read("RECORDER", "image", whole_, "66");
    // For as long as from one poll to the next.
    ASSERT_TRUE(spinUntil([&] { return count("RECORDER") > 45; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    reader->end(SIGKILL);
    EXPECT_TRUE(becomes(false, atOnce));
}

TEST_F(X11CaptureWatchTest, CaptureByCopiesIsSeenFromItsFirstCopy) {
    // What browsers do: nothing of theirs is there before the capture begins.
    const auto reader = read("BROWSER", "copy", whole_, "200");
    ASSERT_TRUE(spinUntil([&] { return count("BROWSER") > 15; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true) << "the first poll tells";
}

TEST_F(X11CaptureWatchTest, CaptureThatBeganBeforeIsSeen) {
    watch_.reset();
    const auto copying = read("EARLY", "copy", whole_, "100");
    ASSERT_TRUE(spinUntil([&] { return count("EARLY") > 0; }, patience));
    watch_ = open();
    const auto before = count("EARLY");
    ASSERT_TRUE(spinUntil([&] { return count("EARLY") > before + 30; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true);
}

TEST_F(X11CaptureWatchTest, WhoeverEndsTheRecordingIsNotTheEndOfTheWatch) {
    ASSERT_TRUE(endRecording());
    checkThatItBeginsAgain();
}

TEST_F(X11CaptureWatchTest, ConnectionThatIsKilledIsMadeAgain) {
    const auto context = endRecording();
    ASSERT_TRUE(context);
    xcb_kill_client(client_.get(), *context);
    client_.sync();
    checkThatItBeginsAgain();
}

TEST_F(X11CaptureWatchTest, DataConnectionThatBreaksIsMadeAgain) {
    watch_.reset();
    const auto before = sockets();
    watch_ = open();
    // The other one is for questions.
    std::vector<int> own;
    std::ranges::set_difference(sockets(), before, std::back_inserter(own));
    ASSERT_THAT(own, SizeIs(2));
    ASSERT_EQ(shutdown(own.back(), SHUT_RDWR), 0);
    checkThatItBeginsAgain();
}

TEST_F(X11CaptureWatchTest, RecordingThatIsEndedAgainAndAgainIsBegunLessAndLessOften) {
    ASSERT_TRUE(endRecording());
    EXPECT_TRUE(becomes(std::nullopt));
    for (const auto pause : {1s, 2s, 4s, 8s}) {
        ASSERT_TRUE(endRecording()) << "it is there again";
        // Nothing is open, so nothing is asked.
        EXPECT_TRUE(
            spinUntil([&] { return watch_->isScreenCaptured() == std::nullopt && watch_->roundTrips() == 0; },
                      patience));
        time_ += pause - 1ms;
        EXPECT_EQ(watch_->isScreenCaptured(), std::nullopt);
        EXPECT_FALSE(endRecording());
        time_ += 1ms;
        EXPECT_EQ(watch_->isScreenCaptured(), std::nullopt);
    }
    EXPECT_THAT(log_.lines, SizeIs(1));
}

TEST_F(X11CaptureWatchTest, ClientOfTheOtherByteOrderIsSeen) {
    const auto reader = read("SWAPPED", "image", whole_, "66", {"swapped"});
    ASSERT_TRUE(spinUntil([&] { return count("SWAPPED") > 30; }, patience)) << count("SWAPPED");
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    reader->end(SIGKILL);
    EXPECT_TRUE(becomes(false, atOnce));
}

TEST_F(X11CaptureWatchTest, CompositorThatCapturesIsSeen) {
    const auto reader = read("COMPOSITOR", "image", whole_, "100", {"damage", "compositor"});
    EXPECT_TRUE(becomes(true));
}

/// A client that copies a lot within a pixmap of its own.
class Flood {
public:
    /// Of 28 bytes each.
    explicit Flood(int copies) {
        xcb_create_pixmap(client_.get(), 24, pixmap_, client_.root(), 10, 10);
        xcb_create_gc(client_.get(), context_, client_.root(), 0, nullptr);
        for (int copy = 0; copy < copies; ++copy) {
            xcb_copy_area(client_.get(), pixmap_, pixmap_, context_, 0, 0, 5, 5, 2, 2);
        }
        client_.sync();
    }

private:
    TestSupport::X11TestClient client_;
    xcb_pixmap_t pixmap_ = xcb_generate_id(client_.get());
    xcb_gcontext_t context_ = xcb_generate_id(client_.get());
};

struct CountingReceiver : LinuxPlatform::X11RecordStream::Receiver {
    int requests = 0;

    void clientStarted(LinuxPlatform::X11ClientId) override {}
    void clientDied(LinuxPlatform::X11ClientId) override {}
    void requestSent(LinuxPlatform::X11ClientId, LinuxPlatform::X11RecordStream::Time,
                     const LinuxPlatform::X11Request&) override {
        ++requests;
    }
};

TEST_F(X11CaptureWatchTest, StreamHandsOverNoMoreAtOnceThanIsWanted) {
    const auto control = LinuxPlatform::X11Connection::open();
    const auto stream = LinuxPlatform::X11RecordStream::open(*control, {{XCB_COPY_AREA, XCB_COPY_AREA}});
    ASSERT_TRUE(stream);
    constexpr int copies = 10'000;
    // The server keeps some of them back, now and then for long.
    constexpr int atLeast = copies / 2;
    Flood{copies};
    CountingReceiver receiver;
    constexpr std::size_t most = 10'000;
    int turns = 0;
    ASSERT_TRUE(spinUntil(
        [&] {
            const auto before = receiver.requests;
            // The last part may be of some length.
            EXPECT_LT(stream->drain(receiver, most), most + 5'000);
            turns += receiver.requests > before ? 1 : 0;
            return receiver.requests >= atLeast;
        },
        patience))
        << receiver.requests;
    EXPECT_LE(receiver.requests, copies) << "nothing comes twice";
    EXPECT_GE(turns, 28 * atLeast / static_cast<int>(most + 5'000));
}

TEST_F(X11CaptureWatchTest, FloodIsLookedThroughTurnByTurnAndNotKnownBefore) {
    constexpr std::size_t most = 1000;
    const auto readers = LinuxPlatform::X11ScreenReaders::open(LinuxPlatform::X11Connection::open(), most);
    ASSERT_TRUE(readers);
    const Flood flood(10'000);
    // Not in the event loop, where they are taken in without a question.
    const QDeadlineTimer deadline(patience);
    while (readers->isCapture() != std::nullopt) {
        ASSERT_FALSE(deadline.hasExpired());
        // Meanwhile the server works.
        client_.sync();
    }
    const auto wakeUps = readers->wakeUps();
    EXPECT_TRUE(spinUntil([&] { return readers->wakeUps() >= wakeUps + 10; }, patience));
    EXPECT_TRUE(spinUntil([&] { return readers->isCapture() == false; }, patience));
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
        watch_ = open();
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
    readers.push_back(read(names[5], "image", {"300", "300", "9", "9"}, "100", {"damage", "compositor"}));
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
            EXPECT_EQ(watch_->isScreenCaptured(), false) << "after " << time.elapsed() << " ms";
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
    ASSERT_EQ(watch_->isScreenCaptured(), false);
    const auto roundTrips = watch_->roundTrips();
    const auto wakeUps = watch_->wakeUps();
    pass(5500ms);
    EXPECT_EQ(watch_->wakeUps(), wakeUps);
    for (int poll = 0; poll < 20; ++poll) {
        EXPECT_EQ(watch_->isScreenCaptured(), false);
    }
    EXPECT_EQ(watch_->roundTrips(), roundTrips) << "a poll asks the server nothing";
    EXPECT_FALSE(watch_->isAboutToWakeUp()) << "a poll is the only wake-up";
}

TEST_F(X11CaptureWatchTest, CaptureCostsOneRoundTripAPollAndNoWakeUp) {
    QElapsedTimer time;
    time.start();
    const auto reader = read("RECORDER", "image", whole_, "66");
    ASSERT_TRUE(becomes(true));
    const auto wakeUps = watch_->wakeUps();
    const auto reads = count("RECORDER");
    ASSERT_TRUE(spinUntil([&] { return count("RECORDER") > reads + 20; }, patience));
    const auto roundTrips = watch_->roundTrips();
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    EXPECT_EQ(watch_->roundTrips(), roundTrips + 1);
    // Where nobody asks, the reads are taken in every five seconds; on a busy machine so many take as long.
    EXPECT_LE(static_cast<qint64>(watch_->wakeUps() - wakeUps), time.elapsed() / 5000);
}

TEST_F(X11CaptureWatchTest, ReadsThatNobodyAsksForAreTakenInNowAndThen) {
    const auto news = countNews();
    const auto reader = read("RECORDER", "image", whole_, "20");
    EXPECT_TRUE(spinUntil([&] { return news_ > 0; }, patience)) << "nobody asked";
    const auto wakeUps = watch_->wakeUps();
    const auto known = std::chrono::steady_clock::now();
    EXPECT_TRUE(spinUntil([&] { return watch_->wakeUps() >= wakeUps + 2; }, patience));
    EXPECT_GE(std::chrono::steady_clock::now() - known, 5s);
    EXPECT_EQ(watch_->isScreenCaptured(), true);
    EXPECT_EQ(news_, 1);
}

TEST_F(X11CaptureWatchTest, ACaptureShowsWithoutBeingAskedFor) {
    const auto news = countNews();
    const auto reader = read("RECORDER", "image", whole_, "66");
    ASSERT_TRUE(spinUntil([&] { return news_ > 0; }, patience));
    EXPECT_EQ(watch_->isScreenCaptured(), true);
}

TEST_F(X11CaptureWatchTest, ThousandCapturesThatComeAndGoLeaveNothing) {
    for (int connection = 0; connection < 1000; ++connection) {
        TestSupport::X11TestClient passing;
        xcb_get_image_unchecked(passing.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, passing.root(), 0, 0, 1280, 800,
                                ~0U);
        if (connection % 10 == 0) {
            passing.sync();
            EXPECT_EQ(watch_->isScreenCaptured(), false);
        }
    }
    EXPECT_TRUE(becomes(false));
    const auto roundTrips = watch_->roundTrips();
    EXPECT_EQ(watch_->isScreenCaptured(), false);
    EXPECT_EQ(watch_->roundTrips(), roundTrips);
    const auto recorder = read("RECORDER", "image", whole_, "100");
    EXPECT_TRUE(becomes(true));
}

TEST_F(X11CaptureWatchTest, ServerThatCannotBeReachedAtFirstIsAskedAgain) {
    const std::string display = std::getenv("DISPLAY");
    setenv("DISPLAY", "unix/no/such/server:0", 1);
    watch_ = open();
    ASSERT_TRUE(watch_);
    EXPECT_EQ(watch_->isScreenCaptured(), std::nullopt);
    setenv("DISPLAY", display.c_str(), 1);
    time_ += LinuxPlatform::Reopening::shortestPause;
    checkThatItBeginsAgain();
}

} // namespace
