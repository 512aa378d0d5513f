// A refresh of everything that the popover shows, until it is drawn, over services that answer at once.

#include "bench/Times.h"
#include "platform/qt/views/ViewEngine.h"
#include "tests/views/ReadinessWorld.h"

#include <QEventLoop>
#include <QQuickItem>
#include <QQuickWindow>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr QSize size{700, 618};
/// Nothing more is drawn after it.
constexpr double restSeconds = 0.1;

/// The popover's content in a window of the software renderer.
struct ShownPopover : TestSupport::ReadinessWorld {
    QtPlatform::ViewEngine engine;
    QQuickWindow window;
    std::unique_ptr<QQuickItem> item;

    ShownPopover() {
        makeRisky();
        makeView();
        engine.style().setAppearance({.isMotionReduced = true});
        item = engine.makeItem(content());
        window.resize(size);
        item->setParentItem(window.contentItem());
        item->setSize(size);
        window.show();
        waitForFrame();
        Bench::idleFor(restSeconds);
    }

    void waitForFrame() {
        QEventLoop loop;
        QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
        loop.exec();
    }
};

/// Every row, the score, the header and the lists change. The counter is the number of frames drawn for it;
/// the limit is one, and a second without anything new in it.
void refreshEverything(benchmark::State& state) {
    ShownPopover popover;
    int frames = 0;
    QObject::connect(&popover.window, &QQuickWindow::frameSwapped, [&frames] { ++frames; });
    bool isClear = false;
    for ([[maybe_unused]] const auto round : state) {
        state.PauseTiming();
        isClear = !isClear;
        popover.workspace.quitAll();
        popover.runner.setting = isClear ? "0\n" : "";
        popover.isPrivacyModeActive = isClear;
        if (!isClear) {
            popover.workspace.run("org.app.Messages");
            popover.workspace.run("org.app.Mail");
        }
        state.ResumeTiming();
        popover.coordinator.refresh();
        popover.waitForFrame();
        state.PauseTiming();
        Bench::idleFor(restSeconds);
        state.ResumeTiming();
    }
    state.counters["frames"] = benchmark::Counter(frames, benchmark::Counter::kAvgIterations);
    state.SetLabel("limit: one frame, 16 ms");
}

BENCHMARK(refreshEverything)
    ->Name("popover.refresh/untilDrawn")
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

} // namespace
