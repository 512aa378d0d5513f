/// What a poll of the screen watch costs with a number of X clients, at rest and while one captures. It needs
/// an X server; scripts/virtual-desktop has one.
#include "platform/linux/screenwatch/PipeWireCaptureWatch.h"
#include "platform/linux/screenwatch/X11CaptureWatch.h"
#include "platform/linux/system/StandardErrorLog.h"

#include <xcb/xcb.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <array>
#include <memory>
#include <vector>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using LinuxPlatform::X11CaptureWatch;
using Client = std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)>;

std::vector<Client> connect(std::int64_t count) {
    std::vector<Client> clients;
    for (std::int64_t client = 0; client < count; ++client) {
        clients.emplace_back(xcb_connect(nullptr, nullptr), &xcb_disconnect);
    }
    return clients;
}

/// A process that reads the whole screen fifteen times a second.
class Recorder {
public:
    Recorder() : pid_(fork()) {
        if (pid_ != 0) {
            return;
        }
        auto* const connection = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(connection) != 0) {
            _exit(1);
        }
        const auto& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        while (xcb_connection_has_error(connection) == 0) {
            const auto question =
                xcb_get_image_unchecked(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, screen.root, 0, 0,
                                        screen.width_in_pixels, screen.height_in_pixels, ~0U);
            std::free(xcb_get_image_reply(connection, question, nullptr));
            usleep(1'000'000 / 15);
        }
        _exit(0);
    }
    ~Recorder() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

private:
    pid_t pid_;
};

void poll(benchmark::State& state, X11CaptureWatch& watch) {
    const auto before = watch.roundTrips();
    for (auto iteration : state) {
        benchmark::DoNotOptimize(watch.isScreenCaptured());
    }
    state.counters["round trips"] = benchmark::Counter(static_cast<double>(watch.roundTrips() - before),
                                                       benchmark::Counter::kAvgIterations);
}

void pollAtRest(benchmark::State& state) {
    LinuxPlatform::StandardErrorLog log;
    const auto watch = X11CaptureWatch::open(log);
    const auto clients = connect(state.range(0));
    if (!watch || watch->isScreenCaptured() != false) {
        return state.SkipWithError("the X server does not tell what is read, or the screen is captured");
    }
    poll(state, *watch);
}

void pollDuringACapture(benchmark::State& state) {
    const Recorder recorder;
    LinuxPlatform::StandardErrorLog log;
    const auto watch = X11CaptureWatch::open(log);
    const auto clients = connect(state.range(0));
    for (int tenths = 0; watch && tenths < 50 && watch->isScreenCaptured() != true; ++tenths) {
        usleep(100'000);
    }
    if (!watch || watch->isScreenCaptured() != true) {
        return state.SkipWithError("the capture is not seen");
    }
    poll(state, *watch);
}

void pollPipeWire(benchmark::State& state) {
    LinuxPlatform::StandardErrorLog log;
    const auto watch = LinuxPlatform::PipeWireCaptureWatch::open(log);
    for (auto iteration : state) {
        benchmark::DoNotOptimize(watch->isScreenCaptured());
    }
    state.SetLabel(watch->isConnected() ? "with a daemon" : "no daemon");
}

BENCHMARK(pollAtRest)->Arg(15)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(pollDuringACapture)->Arg(15)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(pollPipeWire)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
