/// What the live preview costs: virtual cameras of PipeWire, the product's session and view, the software
/// scene graph. Beside it, the same cameras in a preview of GStreamer.
///
/// usage: CameraBenchmark [SECONDS]      how long each picture is looked at, 5 unless told
///
/// It runs itself in a virtual desktop with --media.

#include "Curtain/CameraPreviewManager.h"
#include "bench/ProcessCosts.h"
#include "bench/Times.h"
#include "bench/VirtualDesktop.h"
#include "platform/linux/camera/LinuxCaptureServices.h"
#include "platform/qt/PictureItem.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/ViewEngine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeMediaAuthorization.h"

#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using Bench::idleFor;
using Bench::median;
using Bench::memoryOf;
using Bench::milliseconds;
using Bench::processorSeconds;
using Clock = std::chrono::steady_clock;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

constexpr auto patience = std::chrono::seconds(30);
/// The camera card of the popover.
constexpr int viewWidth = 332;
constexpr int viewHeight = 187;
constexpr int cycles = 200;
/// The cycle after which memory must not grow any more.
constexpr int settledCycle = 20;

/// Percent of a core.
constexpr double mostProcessor = 12;
/// Milliseconds.
constexpr double longestStart = 60;
constexpr double mostMemory = 15;

/// Runs tasks at once: here it is the adapters that are measured.
struct ImmediateQueue : Platform::WorkQueue {
    void async(Task task) override { task(); }
};

class ImmediateWorkQueues : public Platform::WorkQueues {
public:
    std::unique_ptr<Platform::WorkQueue> makeSerial(const std::string&) override {
        return std::make_unique<ImmediateQueue>();
    }
    Platform::WorkQueue& userInitiated() override { return queue_; }

private:
    ImmediateQueue queue_;
};

class CameraCosts {
public:
    CameraCosts(std::string camera, double seconds) : camera_(std::move(camera)), seconds_(seconds) {
        view_.setInitialProperties({{"camera", QVariant::fromValue<QObject*>(&manager_)}});
        view_.setSource(QUrl(QStringLiteral("qrc:/Curtain/CameraPreviewView.qml")));
        view_.setResizeMode(QQuickView::SizeRootObjectToView);
        view_.resize(viewWidth, viewHeight);
        QObject::connect(&view_, &QQuickWindow::frameSwapped, [this] { ++paints_; });
        view_.show();
        spinUntil([this] { return paints_ > 0; }, patience);
    }

    void measure(const char* title, const char* layout, const std::vector<std::string>& options) {
        std::vector<std::string> command{camera_, "bench", "Camera", layout, "size=1280x720"};
        command.insert(command.end(), options.begin(), options.end());
        ChildProcess process(command);
        spinUntil([this] { return services_.devices().size() == 1; }, patience);
        const double before = memoryOf(getpid()).resident;
        begin("bench");
        idleFor(1);
        const int paintsBefore = paints_;
        const auto start = Clock::now();
        const double processor = processorShare(getpid());
        const double wall = milliseconds(Clock::now() - start) / 1000;
        std::printf("%-24s %5.1f %% of a core (limit %.0f), %4.1f pictures/s, %5.1f MiB added (limit %.0f)\n",
                    title, processor, mostProcessor, (paints_ - paintsBefore) / wall,
                    memoryOf(getpid()).resident - before, mostMemory);
        manager_.stop();
        measurePeer(layout);
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
            switches.push_back(begin(turn % 2 == 0 ? "one" : "two"));
        }
        std::vector<double> starts;
        double settled = 0;
        for (int turn = 0; turn < cycles; ++turn) {
            manager_.stop();
            spinUntil([this] { return !picture(); }, patience);
            starts.push_back(begin("one"));
            if (turn == settledCycle) {
                settled = memoryOf(getpid()).resident;
            }
        }
        print("start to first picture", starts);
        print("switch to first picture", switches);
        std::printf("%-24s %+5.1f MiB between start %d and start %d (limit 0)\n", "memory",
                    memoryOf(getpid()).resident - settled, settledCycle, cycles);
        manager_.stop();
    }

private:
    /// In the view.
    std::shared_ptr<const Platform::Picture> picture() const {
        return view_.rootObject()->findChild<QtPlatform::PictureItem*>()->picture();
    }

    /// The milliseconds until the camera's first picture has been painted.
    double begin(const std::string& id) {
        const auto earlier = picture();
        const auto start = Clock::now();
        manager_.start(id);
        spinUntil([&] { return picture() && picture() != earlier; }, patience);
        const int paints = paints_;
        spinUntil([&] { return paints_ > paints; }, patience);
        return milliseconds(Clock::now() - start);
    }

    /// Percent of a core that a process uses for a while.
    double processorShare(pid_t process) const {
        const double before = processorSeconds(process);
        const auto start = Clock::now();
        idleFor(seconds_);
        return (processorSeconds(process) - before) / milliseconds(Clock::now() - start) * 1e5;
    }

    void measurePeer(const std::string& layout) const {
        const std::string size = ",width=1280,height=720";
        std::vector<std::string> command{"gst-launch-1.0", "-q", "pipewiresrc", "target-object=bench", "!"};
        if (layout == "jpeg") {
            command.insert(command.end(), {"image/jpeg" + size, "!", "jpegdec"});
        } else {
            command.push_back("video/x-raw,format=YUY2" + size);
        }
        command.insert(command.end(), {"!", "videoscale", "!", "videoconvert", "!",
                                       "video/x-raw,width=" + std::to_string(viewWidth) +
                                           ",height=" + std::to_string(viewHeight),
                                       "!", "ximagesink"});
        const ChildProcess peer(command);
        idleFor(2);
        const double processor = processorShare(peer.id());
        std::printf("  with gst-launch-1.0      %5.1f %% of a core, %5.1f MiB in all\n", processor,
                    memoryOf(peer.id()).resident);
    }

    static void print(const char* title, const std::vector<double>& times) {
        std::printf("%-24s %5.1f ms median, %5.1f ms worst (limit %.0f)\n", title, median(times),
                    std::ranges::max(times), longestStart);
    }

    std::string camera_;
    double seconds_;
    QtPlatform::QtMainQueue mainQueue_;
    ImmediateWorkQueues workQueues_;
    LinuxPlatform::LinuxCaptureServices services_{
        mainQueue_, workQueues_, std::make_unique<LinuxPlatform::PipeWireCameras>(), nullptr};
    TestSupport::FakeMediaAuthorization authorization_;
    Curtain::CameraPreviewManager manager_{{services_, authorization_, mainQueue_, workQueues_}};
    QtPlatform::ViewEngine engine_;
    QQuickView view_{&engine_.engine(), nullptr};
    int paints_ = 0;
};

} // namespace

int main(int argumentCount, char** arguments) {
    continueInVirtualDesktop({"--tray", "none", "--media"}, argumentCount, arguments);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argumentCount, arguments);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    CameraCosts costs(VIRTUAL_CAMERA, argumentCount > 1 ? std::atof(arguments[1]) : 5);
    costs.measure("720p raw", "yuyv", {});
    costs.measure("720p JPEG, flat", "jpeg", {});
    costs.measure("720p JPEG, photo-like", "jpeg", {"photo"});
    costs.measureStarts();
    return EXIT_SUCCESS;
}
