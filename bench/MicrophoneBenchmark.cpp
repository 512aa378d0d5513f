/// What the microphone's meter costs on a real sound server with a virtual microphone, and what GStreamer's
/// meter costs beside it: both take the same source from the same server, by the same library, and compute
/// a level for every 1024 frames.
///
/// usage: MicrophoneBenchmark [SECONDS]      how long each meter is looked at, 8 unless told
///
/// It runs itself in a virtual desktop with --media.

#include "Curtain/MicrophoneMonitor.h"
#include "bench/GStreamer.h"
#include "bench/ProcessCosts.h"
#include "bench/Times.h"
#include "bench/VirtualDesktop.h"
#include "platform/linux/audio/PulseAudioServices.h"
#include "platform/linux/system/PosixFileManager.h"
#include "platform/linux/system/ThreadWorkQueues.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SoundWorld.h"

#include <QCoreApplication>

#include <pulse/context.h>
#include <pulse/subscribe.h>
#include <pulse/thread-mainloop.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using Bench::idleFor;
using Bench::Memory;
using Bench::memoryOf;
using Bench::milliseconds;
using Bench::processorSeconds;
using Clock = std::chrono::steady_clock;
using TestSupport::spinUntil;

constexpr auto patience = std::chrono::seconds(30);
constexpr int rounds = 30;
constexpr int turns = 5;

void print(const char* what, const std::vector<double>& values, const char* unit, const char* limit) {
    std::printf("%-42s median %7.1f, worst %7.1f %s   (%s)\n", what, Bench::median(values),
                std::ranges::max(values), unit, limit);
}

void print(const char* what, double value, const char* unit, const char* limit) {
    std::printf("%-42s %14.2f %s   (%s)\n", what, value, unit, limit);
}

/// Hears from the server itself, by a connection of its own, when a recording stream ends.
class StreamWatch {
public:
    StreamWatch()
        : loop_(pa_threaded_mainloop_new(), &pa_threaded_mainloop_free),
          context_(pa_context_new(pa_threaded_mainloop_get_api(loop_.get()), "benchmark"),
                   &pa_context_unref) {
        pa_context_set_state_callback(
            context_.get(),
            [](pa_context* context, void* data) {
                if (pa_context_get_state(context) == PA_CONTEXT_READY) {
                    pa_operation_unref(
                        pa_context_subscribe(context, PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT, nullptr, nullptr));
                    static_cast<StreamWatch*>(data)->isReady_ = true;
                }
            },
            this);
        pa_context_set_subscribe_callback(
            context_.get(),
            [](pa_context*, pa_subscription_event_type_t type, std::uint32_t, void* data) {
                if ((type & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE) {
                    static_cast<StreamWatch*>(data)->lastEnd_ = Clock::now();
                }
            },
            this);
        pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
        pa_threaded_mainloop_start(loop_.get());
        spinUntil([this] { return isReady_.load(); }, patience);
    }
    ~StreamWatch() {
        pa_threaded_mainloop_stop(loop_.get());
        pa_context_disconnect(context_.get());
    }
    StreamWatch(const StreamWatch&) = delete;
    StreamWatch& operator=(const StreamWatch&) = delete;

    Clock::time_point lastEnd() const { return lastEnd_; }

private:
    std::unique_ptr<pa_threaded_mainloop, decltype(&pa_threaded_mainloop_free)> loop_;
    std::unique_ptr<pa_context, decltype(&pa_context_unref)> context_;
    std::atomic<bool> isReady_ = false;
    std::atomic<Clock::time_point> lastEnd_{};
};

class MicrophoneCosts {
public:
    explicit MicrophoneCosts(double seconds) : seconds_(seconds) {
        folders_.temporaryFolder = folder_.path().string();
        sound_.feed(TestSupport::tone(440, 0.01, 300));
    }

    /// In turns, so that what else the computer does weighs on both alike.
    void measureCosts() {
        const auto idlePipeline = Bench::memoryOfIdlePipeline();
        const auto before = memoryOf(getpid());
        makeMonitor();
        std::vector<double> ours;
        std::vector<double> peers;
        Memory after;
        Memory peer;
        for (int turn = 0; turn < turns; ++turn) {
            ours.push_back(processorWhileMetering());
            if (turn == 0) {
                after = memoryOf(getpid());
            }
            stopMetering();
            const Bench::GStreamerPipeline pipeline(
                "pulsesrc device=microphone ! audio/x-raw,format=F32LE,rate=48000,channels=1",
                "level interval=21333333 ! fakesink");
            const auto work = pipeline.workFor(seconds_);
            peers.push_back(100 * work.seconds / work.wallSeconds);
            peer = pipeline.memory();
        }
        print("processor while metering", ours, "% of a core", "limit 1");
        print("GStreamer: processor while metering", peers, "% of a core", "peer");
        print("memory added, resident", after.resident - before.resident, "MiB", "limit 3");
        print("memory added, proportional", after.proportional - before.proportional, "MiB", "of which");
        print("GStreamer: memory, resident", peer.resident, "MiB", "peer, the whole program");
        print("GStreamer: memory added, resident", peer.resident - idlePipeline.resident, "MiB",
              "peer, over a pipeline that does nothing");
    }

    void measureTimes() {
        const StreamWatch watch;
        std::vector<double> starts;
        std::vector<double> stops;
        for (int round = 0; round < rounds; ++round) {
            starts.push_back(milliseconds(startMetering()));
            const auto stopped = Clock::now();
            monitor_->stop();
            spinUntil([&] { return watch.lastEnd() > stopped; }, patience);
            stops.push_back(milliseconds(watch.lastEnd() - stopped));
            stopMetering();
        }
        print("start to first level", starts, "ms", "limit 80");
        print("stop to no stream on the server", stops, "ms", "limit 100");
    }

    static void measurePeerTimes() {
        const std::string pipeline =
            " pulsesrc device=microphone ! audio/x-raw,format=F32LE,rate=48000,channels=1 ! level "
            "interval=21333333 ! fakesink";
        std::vector<double> starts;
        // The first one takes stock of its plugins, which does not count.
        for (int round = 0; round <= 5; ++round) {
            const auto started = Clock::now();
            TestSupport::outputOf("gst-launch-1.0 -m" + pipeline + " | grep -m 1 -q rms");
            starts.push_back(milliseconds(Clock::now() - started));
        }
        starts.erase(starts.begin());
        print("GStreamer: start of the program to a level", starts, "ms", "peer");
    }

private:
    void makeMonitor() {
        monitor_.emplace(Curtain::MicrophoneMonitor::Services{audio_, authorization_, files_, folders_,
                                                              mainQueue_, workQueues_, log_});
        QObject::connect(&*monitor_, &Curtain::MicrophoneMonitor::changed, [this] {
            if (!firstLevel_ && monitor_->level() > 0) {
                firstLevel_ = Clock::now();
            }
        });
    }

    /// How long it takes until there is a level.
    Clock::duration startMetering() {
        firstLevel_.reset();
        const auto started = Clock::now();
        monitor_->start();
        if (!spinUntil([this] { return firstLevel_.has_value(); }, patience)) {
            std::fputs("There is no level.\n", stderr);
            std::exit(EXIT_FAILURE);
        }
        return *firstLevel_ - started;
    }

    void stopMetering() {
        monitor_->stop();
        spinUntil([] { return !TestSupport::SoundWorld::hasOurRecording(); }, patience);
    }

    /// Percent of a core.
    double processorWhileMetering() {
        startMetering();
        idleFor(1);
        const auto before = processorSeconds(getpid());
        const auto start = Clock::now();
        idleFor(seconds_);
        return (processorSeconds(getpid()) - before) / milliseconds(Clock::now() - start) * 1e5;
    }

    double seconds_;
    TestSupport::SoundWorld sound_;
    TestSupport::TemporaryFolder folder_;
    QtPlatform::QtMainQueue mainQueue_;
    LinuxPlatform::ThreadWorkQueues workQueues_;
    LinuxPlatform::PulseAudioServices audio_{mainQueue_};
    TestSupport::FakeMediaAuthorization authorization_;
    LinuxPlatform::PosixFileManager files_;
    TestSupport::FakeUserFolders folders_;
    TestSupport::RecordingLog log_;
    std::optional<Curtain::MicrophoneMonitor> monitor_;
    std::optional<Clock::time_point> firstLevel_;
};

} // namespace

int main(int argumentCount, char** arguments) {
    continueInVirtualDesktop({"--session", "x11-bare", "--tray", "none", "--media"}, argumentCount,
                             arguments);
    const QCoreApplication application(argumentCount, arguments);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    MicrophoneCosts costs(argumentCount > 1 ? std::atof(arguments[1]) : 8);
    costs.measureCosts();
    costs.measureTimes();
    MicrophoneCosts::measurePeerTimes();
    return EXIT_SUCCESS;
}
