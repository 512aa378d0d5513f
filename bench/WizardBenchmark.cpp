#include "platform/qt/views/QtWindows.h"
#include "platform/qt/views/ViewEngine.h"
#include "tests/support/OnboardingWorld.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQuickWindow>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <memory>

namespace {

constexpr auto viewAddress = "qrc:/Curtain/OnboardingWizardView.qml";

/// The wizard in a window of the software renderer.
struct ShownWizard : TestSupport::OnboardingWorld {
    std::shared_ptr<Curtain::OnboardingViewModel> model = makeModel();
    QtPlatform::ViewEngine engine;
    QtPlatform::QtScreens screens{{}};
    QtPlatform::QtWindows windows{engine, screens, {}};
    std::unique_ptr<Platform::Window> window = windows.makeWindow({viewAddress, model}, {420, 460}, {});

    void show() {
        window->makeKeyAndOrderFront();
        model->windowDidShow();
        waitForFrame();
    }

    static void waitForFrame() {
        QEventLoop loop;
        for (auto* const candidate : QGuiApplication::allWindows()) {
            if (auto* const quickWindow = qobject_cast<QQuickWindow*>(candidate)) {
                QObject::connect(quickWindow, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
            }
        }
        loop.exec();
    }
};

/// What the main thread has worked so far; other programs do not count.
double secondsWorked() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// From the click to the first page on the screen, with nothing loaded yet in the first round.
void firstPage(benchmark::State& state) {
    for ([[maybe_unused]] const auto round : state) {
        ShownWizard wizard;
        wizard.show();
    }
}

/// From the click on a page's button to the next page on the screen; the slowest of all changes. The counter
/// is the longest that the main thread worked for one.
void slowestPageChange(benchmark::State& state) {
    double longestWork = 0;
    for ([[maybe_unused]] const auto round : state) {
        ShownWizard wizard;
        wizard.show();
        double slowest = 0;
        while (wizard.model->flow().hasNext()) {
            QElapsedTimer timer;
            timer.start();
            const auto workBefore = secondsWorked();
            wizard.model->advance();
            ShownWizard::waitForFrame();
            slowest = std::max(slowest, static_cast<double>(timer.nsecsElapsed()) / 1e9);
            longestWork = std::max(longestWork, secondsWorked() - workBefore);
        }
        state.SetIterationTime(slowest);
    }
    state.counters["work_ms"] = longestWork * 1000;
}

BENCHMARK(firstPage)->Name("firstPage/cold")->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(firstPage)->Name("firstPage/warm")->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(slowestPageChange)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
