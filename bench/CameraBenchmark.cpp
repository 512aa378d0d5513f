/// What the live preview costs: virtual cameras of PipeWire, the product's session and view, the software
/// scene graph.
///
/// usage: CameraBenchmark [SECONDS]      how long each picture is looked at, 5 unless told
///
/// It runs itself in a virtual desktop with --media.

#include "Curtain/CameraPreviewManager.h"
#include "bench/VirtualDesktop.h"
#include "platform/linux/camera/LinuxCaptureServices.h"
#include "platform/qt/Items.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeMediaAuthorization.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickView>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

constexpr auto patience = std::chrono::seconds(30);
/// The camera card of the popover.
constexpr int viewWidth = 332;
constexpr int viewHeight = 187;
constexpr int cycles = 200;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double residentMegabytes() {
    std::ifstream file("/proc/self/statm");
    double size = 0;
    double resident = 0;
    file >> size >> resident;
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// Runs tasks at once: here it is the adapters that are measured.
class ImmediateWorkQueues : public Platform::WorkQueues, private Platform::WorkQueue {
public:
    std::unique_ptr<Platform::WorkQueue> makeSerial(const std::string&) override { return nullptr; }
    Platform::WorkQueue& userInitiated() override { return *this; }

private:
    void async(Task task) override { task(); }
};

class Bench {
public:
    Bench(std::string camera, double seconds) : camera_(std::move(camera)), seconds_(seconds) {
        view_.setInitialProperties({{"camera", QVariant::fromValue<QObject*>(&manager_)}});
        view_.setSource(QUrl(QStringLiteral("qrc:/Curtain/CameraPreviewView.qml")));
        view_.setResizeMode(QQuickView::SizeRootObjectToView);
        view_.resize(viewWidth, viewHeight);
        QObject::connect(&view_, &QQuickWindow::frameSwapped, [this] { ++paints_; });
        view_.show();
        spinUntil([this] { return paints_ > 0; }, patience);
    }

    void measure(const char* title, const std::vector<std::string>& arguments) {
        std::vector<std::string> command{camera_, "bench", "Camera"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        ChildProcess process(command);
        spinUntil([this] { return services_.devices().size() == 1; }, patience);
        const double before = residentMegabytes();
        begin();
        rest(1);
        const int paintsBefore = paints_;
        const double processor = processorSeconds();
        const auto start = Clock::now();
        rest(seconds_);
        const double wall = milliseconds(Clock::now() - start) / 1000;
        std::printf("%-28s %5.1f %% of a core, %4.1f pictures/s, %5.1f MB added\n", title,
                    (processorSeconds() - processor) / wall * 100, (paints_ - paintsBefore) / wall,
                    residentMegabytes() - before);
        manager_.stop();
        process.end(SIGTERM);
        spinUntil([this] { return services_.devices().empty(); }, patience);
    }

    void measureStarts() {
        ChildProcess one({camera_, "one", "One", "jpeg"});
        ChildProcess two({camera_, "two", "Two", "jpeg"});
        spinUntil([this] { return services_.devices().size() == 2; }, patience);
        // The cameras draw their frames at the first use.
        for (const auto* id : {"one", "two"}) {
            begin(id);
        }
        std::vector<double> switches;
        for (int turn = 0; turn < 21; ++turn) {
            const auto start = Clock::now();
            begin(turn % 2 == 0 ? "one" : "two");
            switches.push_back(milliseconds(Clock::now() - start));
        }
        std::vector<double> starts;
        double early = 0;
        for (int turn = 0; turn < cycles; ++turn) {
            manager_.stop();
            rest(0);
            const auto start = Clock::now();
            begin("one");
            starts.push_back(milliseconds(Clock::now() - start));
            if (turn == 20) {
                early = residentMegabytes();
            }
        }
        std::printf("%-28s %5.1f ms median, %5.1f ms worst\n", "start to first picture", median(starts),
                    std::ranges::max(starts));
        std::printf("%-28s %5.1f ms median, %5.1f ms worst\n", "switch to first picture", median(switches),
                    std::ranges::max(switches));
        std::printf("%-28s %+5.1f MB between cycle 20 and cycle %d\n", "memory", residentMegabytes() - early,
                    cycles);
        manager_.stop();
    }

private:
    /// Until the first picture of it is there.
    void begin(const std::string& id = "bench") {
        int changes = 0;
        manager_.start(id);
        const auto watcher = manager_.session()->makePreview([&] { ++changes; });
        watcher->setSize(viewWidth, viewHeight);
        spinUntil([&] { return changes > 0 && watcher->picture(); }, patience);
    }

    static void rest(double seconds) {
        QEventLoop loop;
        QTimer::singleShot(std::chrono::milliseconds(static_cast<int>(seconds * 1000)), &loop,
                           &QEventLoop::quit);
        loop.exec();
    }

    static double median(std::vector<double> values) {
        std::ranges::sort(values);
        return values[values.size() / 2];
    }

    std::string camera_;
    double seconds_;
    QtPlatform::QtMainQueue mainQueue_;
    LinuxPlatform::LinuxCaptureServices services_{
        mainQueue_, std::make_unique<LinuxPlatform::PipeWireCameras>(), nullptr};
    TestSupport::FakeMediaAuthorization authorization_;
    ImmediateWorkQueues workQueues_;
    Curtain::CameraPreviewManager manager_{{services_, authorization_, mainQueue_, workQueues_}};
    QQuickView view_;
    int paints_ = 0;
};

} // namespace

int main(int argumentCount, char** arguments) {
    continueInVirtualDesktop({"--tray", "none", "--media"}, argumentCount, arguments);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argumentCount, arguments);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    QtPlatform::registerItems();
    Bench bench(VIRTUAL_CAMERA, argumentCount > 1 ? std::atof(arguments[1]) : 5);
    bench.measure("720p raw", {"yuyv", "size=1280x720"});
    bench.measure("720p JPEG, flat", {"jpeg", "size=1280x720"});
    bench.measure("720p JPEG, photo-like", {"jpeg", "size=1280x720", "photo"});
    bench.measureStarts();
    return EXIT_SUCCESS;
}
