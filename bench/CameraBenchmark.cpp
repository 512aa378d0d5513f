/// What the live preview costs: virtual cameras of PipeWire, the product's session and view, the software
/// scene graph. Beside it, in turns, the same cameras in a preview of GStreamer.
///
/// usage: CameraBenchmark [SECONDS]      how long each picture is looked at, 5 unless told
///
/// It runs itself in a virtual desktop with --media.

#include "Curtain/CameraPreviewManager.h"
#include "bench/GStreamer.h"
#include "bench/ProcessCosts.h"
#include "bench/Times.h"
#include "bench/VirtualDesktop.h"
#include "platform/linux/camera/LinuxCaptureServices.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/items/PictureItem.h"
#include "platform/qt/views/ViewEngine.h"
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
#include <optional>
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
/// The first of them are compared with GStreamer's.
constexpr int comparedStarts = 40;
/// The cycle after which memory must not grow any more.
constexpr int settledCycle = 20;

/// Of each picture that is looked at.
constexpr int turns = 5;

/// Percent of a core.
constexpr double mostProcessorRaw = 4;
constexpr double mostProcessorJpeg = 10;
/// Milliseconds.
constexpr double longestStart = 60;
/// MiB.
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

/// Of every turn.
struct Costs {
    /// Percent of a core.
    std::vector<double> processor;
    std::vector<double> millisecondsAPicture;
    /// A second.
    std::vector<double> pictures;
    /// MiB. What a first turn has mapped is there already in the later ones.
    std::vector<double> memory;

    void add(const Bench::GStreamerPipeline::Work& work, double memoryAdded) {
        processor.push_back(100 * work.seconds / work.wallSeconds);
        millisecondsAPicture.push_back(1000 * work.seconds / work.buffers);
        pictures.push_back(work.buffers / work.wallSeconds);
        memory.push_back(memoryAdded);
    }
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

    void measure(const char* title, const char* layout, double mostProcessor,
                 const std::vector<std::string>& options) {
        std::vector<std::string> command{camera_, "bench", "Camera", layout, "size=1280x720"};
        command.insert(command.end(), options.begin(), options.end());
        ChildProcess process(command);
        spinUntil([this] { return services_.devices().size() == 1; }, patience);
        Costs ours;
        Costs peer;
        for (int turn = 0; turn < turns; ++turn) {
            lookFor(ours);
            lookWithGStreamer(layout, peer);
        }
        std::printf("%s\n", title);
        print("  Curtain", ours, mostProcessor, mostMemory);
        print("  GStreamer", peer, std::nullopt, std::nullopt);
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
        std::vector<double> bareStarts;
        std::vector<double> differences;
        double settled = 0;
        for (int turn = 0; turn < cycles; ++turn) {
            stop();
            if (turn < comparedStarts) {
                bareStarts.push_back(milliseconds(
                    Bench::timeToFirstBuffer("pipewiresrc target-object=one", pictureSize("image/jpeg"))));
            }
            starts.push_back(begin("one"));
            if (turn < comparedStarts) {
                differences.push_back(starts.back() - bareStarts.back());
            }
            if (turn == settledCycle) {
                settled = memoryOf(getpid()).resident;
            }
        }
        print("start to first picture", starts, longestStart);
        print("  GStreamer, first buffer", bareStarts, std::nullopt);
        print("  later than GStreamer", differences, longestStart);
        print("switch to first picture", switches, longestStart);
        std::printf("%-24s %+5.1f MiB between start %d and start %d (limit 0)\n", "memory",
                    memoryOf(getpid()).resident - settled, settledCycle, cycles);
        manager_.stop();
    }

private:
    QtPlatform::PictureItem& item() const {
        return *view_.rootObject()->findChild<QtPlatform::PictureItem*>();
    }

    /// In the view.
    std::shared_ptr<const Platform::Picture> picture() const { return item().picture(); }

    /// The milliseconds until the camera's first picture has been painted.
    double begin(const std::string& id) {
        std::optional<int> paintsBefore;
        // It may be painted before anybody looks, and the next paint is that of the next picture.
        const auto news = QObject::connect(&item(), &QtPlatform::PictureItem::pictureChanged, [&] {
            if (picture() && !paintsBefore) {
                paintsBefore = paints_;
            }
        });
        const auto start = Clock::now();
        manager_.start(id);
        spinUntil([&] { return paintsBefore && paints_ > *paintsBefore; }, patience);
        const auto end = Clock::now();
        QObject::disconnect(news);
        return milliseconds(end - start);
    }

    void stop() {
        manager_.stop();
        spinUntil([this] { return !picture(); }, patience);
    }

    void lookFor(Costs& costs) {
        const double memoryBefore = memoryOf(getpid()).resident;
        begin("bench");
        idleFor(1);
        const int paintsBefore = paints_;
        const double workBefore = processorSeconds(getpid());
        const auto start = Clock::now();
        idleFor(seconds_);
        costs.add({processorSeconds(getpid()) - workBefore, milliseconds(Clock::now() - start) / 1000,
                   static_cast<double>(paints_ - paintsBefore)},
                  memoryOf(getpid()).resident - memoryBefore);
        stop();
    }

    static std::string pictureSize(const std::string& format) { return format + ",width=1280,height=720"; }

    void lookWithGStreamer(const std::string& layout, Costs& costs) const {
        const bool isJpeg = layout == "jpeg";
        // Without sync and qos, every picture is decoded and shown as it comes.
        const Bench::GStreamerPipeline peer(
            "pipewiresrc target-object=bench ! " +
                pictureSize(isJpeg ? "image/jpeg" : "video/x-raw,format=YUY2"),
            std::string(isJpeg ? "jpegdec ! " : "") +
                "videoscale ! videoconvert ! video/x-raw,width=" + std::to_string(viewWidth) +
                ",height=" + std::to_string(viewHeight) + " ! ximagesink sync=false qos=false");
        const auto work = peer.workFor(seconds_);
        costs.add(work, peer.memory().resident - memoryOfIdlePipeline_);
    }

    static void print(const char* title, const Costs& costs, std::optional<double> processorLimit,
                      std::optional<double> memoryLimit) {
        std::printf("%-12s %5.1f %% of a core%s, %5.2f ms a picture, %4.1f pictures/s, %5.1f MiB added%s\n",
                    title, median(costs.processor), limit(processorLimit).c_str(),
                    median(costs.millisecondsAPicture), median(costs.pictures), costs.memory.front(),
                    limit(memoryLimit).c_str());
    }

    static std::string limit(std::optional<double> value) {
        return value ? " (limit " + std::to_string(static_cast<int>(*value)) + ")" : "";
    }

    static void print(const char* title, const std::vector<double>& times, std::optional<double> longest) {
        std::printf("%-26s %5.1f ms median, %5.1f ms worst%s\n", title, median(times),
                    std::ranges::max(times), limit(longest).c_str());
    }

    std::string camera_;
    double seconds_;
    double memoryOfIdlePipeline_ = Bench::memoryOfIdlePipeline().resident;
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
    costs.measure("720p raw", "yuyv", mostProcessorRaw, {});
    costs.measure("720p JPEG, flat", "jpeg", mostProcessorJpeg, {});
    costs.measure("720p JPEG, photo-like", "jpeg", mostProcessorJpeg, {"photo"});
    costs.measureStarts();
    return EXIT_SUCCESS;
}
