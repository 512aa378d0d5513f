/// Asks every three seconds whether the screen is captured, as Curtain does, until it is ended. Each answer
/// is a line:
///
///     watched|free|unknown MILLISECONDS ROUNDTRIPS WAKEUPS KILOBYTES
///
/// how long the answer took, and of the X server's part how often it had to wait for the server in all and
/// how often it woke up by itself; at last the resident memory of this program. With `nothing` as its only
/// word it watches nothing.
#include "platform/linux/screenwatch/PipeWireCaptureWatch.h"
#include "platform/linux/screenwatch/ScreenWatch.h"
#include "platform/linux/screenwatch/X11CaptureWatch.h"
#include "platform/linux/system/StandardErrorLog.h"

#include <QCoreApplication>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

long residentKilobytes() {
    std::ifstream file("/proc/self/statm");
    long total = 0;
    long resident = 0;
    file >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    LinuxPlatform::StandardErrorLog log;
    const bool watchesNothing = argumentCount > 1 && std::string_view(arguments[1]) == "nothing";
    std::vector<std::unique_ptr<LinuxPlatform::CaptureWatch>> roads;
    auto x11 = watchesNothing ? nullptr : LinuxPlatform::X11CaptureWatch::open(log);
    const auto* const x11Watch = x11.get();
    if (x11) {
        roads.push_back(std::move(x11));
    }
    if (auto pipeWire = watchesNothing ? nullptr : LinuxPlatform::PipeWireCaptureWatch::open(log)) {
        roads.push_back(std::move(pipeWire));
    }
    LinuxPlatform::ScreenWatch watch(std::move(roads));
    const auto isWatched = watch.lookUp("CGSIsScreenWatcherPresent");
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        using Clock = std::chrono::steady_clock;
        const auto start = Clock::now();
        const auto answer = isWatched ? isWatched() : false;
        const std::chrono::duration<double, std::milli> duration = Clock::now() - start;
        std::printf("%s %.3f %llu %llu %ld\n",
                    !answer   ? "unknown"
                    : *answer ? "watched"
                              : "free",
                    duration.count(),
                    x11Watch != nullptr ? static_cast<unsigned long long>(x11Watch->roundTrips()) : 0ULL,
                    x11Watch != nullptr ? static_cast<unsigned long long>(x11Watch->wakeUps()) : 0ULL,
                    residentKilobytes());
        std::fflush(stdout);
    });
    timer.start(std::chrono::seconds(3));
    return QCoreApplication::exec();
}
