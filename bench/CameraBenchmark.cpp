/// What the live preview costs: virtual cameras of PipeWire, the product's session and view, the software
/// scene graph. Beside it, the same cameras in a preview of GStreamer.
///
/// usage: CameraBenchmark [SECONDS]      how long each picture is looked at, 5 unless told
///
/// It runs itself in a virtual desktop with --media.

#include "Curtain/CameraPreviewManager.h"
#include "bench/VirtualDesktop.h"
#include "platform/linux/camera/LinuxCaptureServices.h"
#include "platform/qt/PictureItem.h"
#include "platform/qt/QtMainQueue.h"
#include "platform/qt/ViewEngine.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/FakeMediaAuthorization.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

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
/// The cycle after which memory must not grow any more.
constexpr int settledCycle = 20;

/// Percent of a core.
constexpr double mostProcessor = 12;
/// Milliseconds.
constexpr double longestStart = 60;
constexpr double mostMemory = 15;

double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// What a process has used so far; with 0, this one.
struct Usage {
    double processorSeconds = 0;
    double residentMegabytes = 0;
};

Usage usageOf(pid_t process = 0) {
    const auto folder = "/proc/" + (process == 0 ? "self" : std::to_string(process));
    std::ifstream stat(folder + "/stat");
    std::string text;
    std::getline(stat, text);
    // The name, in parentheses, may have spaces; the times are the 12th and 13th word behind it.
    std::istringstream words(text.substr(text.rfind(')') + 1));
    std::string word;
    for (int skipped = 0; skipped < 11; ++skipped) {
        words >> word;
    }
    double user = 0;
    double system = 0;
    words >> user >> system;
    std::ifstream statm(folder + "/statm");
    double size = 0;
    double resident = 0;
    statm >> size >> resident;
    return {(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK)),
            resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6};
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

    void measure(const char* title, const char* layout, const std::vector<std::string>& options) {
        std::vector<std::string> command{camera_, "bench", "Camera", layout, "size=1280x720"};
        command.insert(command.end(), options.begin(), options.end());
        ChildProcess process(command);
        spinUntil([this] { return services_.devices().size() == 1; }, patience);
        const double before = usageOf().residentMegabytes;
        begin("bench");
        rest(1);
        const int paintsBefore = paints_;
        const auto start = Clock::now();
        const double processor = processorShare(0);
        const double wall = milliseconds(Clock::now() - start) / 1000;
        std::printf("%-24s %5.1f %% of a core (limit %.0f), %4.1f pictures/s, %5.1f MB added (limit %.0f)\n",
                    title, processor, mostProcessor, (paints_ - paintsBefore) / wall,
                    usageOf().residentMegabytes - before, mostMemory);
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
                settled = usageOf().residentMegabytes;
            }
        }
        print("start to first picture", starts);
        print("switch to first picture", switches);
        std::printf("%-24s %+5.1f MB between start %d and start %d (limit 0)\n", "memory",
                    usageOf().residentMegabytes - settled, settledCycle, cycles);
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
        const double before = usageOf(process).processorSeconds;
        const auto start = Clock::now();
        rest(seconds_);
        return (usageOf(process).processorSeconds - before) / milliseconds(Clock::now() - start) * 1e5;
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
        rest(2);
        const double processor = processorShare(peer.id());
        std::printf("  with gst-launch-1.0      %5.1f %% of a core, %5.1f MB in all\n", processor,
                    usageOf(peer.id()).residentMegabytes);
    }

    static void print(const char* title, const std::vector<double>& times) {
        std::printf("%-24s %5.1f ms median, %5.1f ms worst (limit %.0f)\n", title, median(times),
                    std::ranges::max(times), longestStart);
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
    Bench bench(VIRTUAL_CAMERA, argumentCount > 1 ? std::atof(arguments[1]) : 5);
    bench.measure("720p raw", "yuyv", {});
    bench.measure("720p JPEG, flat", "jpeg", {});
    bench.measure("720p JPEG, photo-like", "jpeg", {"photo"});
    bench.measureStarts();
    return EXIT_SUCCESS;
}
