#include "Curtain/SystemAppHiding.h"
#include "bench/BareWindows.h"
#include "bench/Times.h"
#include "core/HideEngine.h"
#include "platform/linux/windows/x11/X11WindowSystem.h"
#include "platform/linux/workspace/LinuxWorkspace.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/X11TestClient.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

/// What hiding, showing and reading windows costs, beside what it costs without Curtain. Runs on a display
/// whose windows are its own.

namespace {

using Bench::BareWindows;
using Bench::median;
using LinuxPlatform::WindowId;
using LinuxPlatform::X11Connection;
using LinuxPlatform::X11WindowSystem;
using TestSupport::ChildProcess;
using TestSupport::X11TestClient;

double millisecondsFor(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return Bench::milliseconds(std::chrono::steady_clock::now() - start);
}

void require(bool holds, const char* what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

/// Windows on the screen for as long as this exists.
class OpenWindows {
public:
    OpenWindows(std::size_t count, const std::function<std::string(std::size_t)>& className) {
        for (std::size_t index = 0; index < count; ++index) {
            const auto name = className(index);
            ids.push_back(client_.create(name, name));
            xcb_map_window(client_.get(), ids.back());
        }
        client_.sync();
    }

    ~OpenWindows() {
        for (const auto window : ids) {
            xcb_destroy_window(client_.get(), window);
        }
        TestSupport::spinUntil([&] { return client_.numbers(client_.root(), "_NET_CLIENT_LIST").empty(); },
                               std::chrono::minutes(1));
    }

    OpenWindows(const OpenWindows&) = delete;
    OpenWindows& operator=(const OpenWindows&) = delete;

    std::vector<xcb_window_t> ids;

private:
    X11TestClient client_;
};

/// The product's adapter, in its event loop.
class CurtainWindows {
public:
    X11WindowSystem& system() { return system_; }
    X11Connection& connection() { return *connection_; }
    Platform::MainQueue& mainQueue() { return mainQueue_; }

    /// Until all windows on the screen are hidden, or shown.
    void waitUntil(bool isHidden, std::size_t count) {
        while (static_cast<std::size_t>(std::ranges::count(system_.windows(), isHidden,
                                                           &LinuxPlatform::Window::isHidden)) != count) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

private:
    QtPlatform::QtMainQueue mainQueue_;
    std::unique_ptr<X11Connection> connection_ = X11Connection::open();
    X11WindowSystem system_{*connection_, mainQueue_};
};

/// A program for the command line, once for all windows or once for each.
void runForEach(const std::vector<std::string>& command, const std::vector<xcb_window_t>& windows,
                bool isChained) {
    std::vector<std::string> chain{command.front()};
    for (const auto window : windows) {
        auto single = std::vector<std::string>{command.front()};
        for (auto argument = command.begin() + 1; argument != command.end(); ++argument) {
            const auto text = *argument == "WINDOW" ? std::to_string(window) : *argument;
            (isChained ? chain : single).push_back(text);
        }
        if (!isChained) {
            require(ChildProcess(single).succeeds(), command.front().c_str());
        }
    }
    if (isChained) {
        require(ChildProcess(chain).succeeds(), command.front().c_str());
    }
}

struct Contender {
    const char* name;
    std::function<void()> hide;
    std::function<void()> show;
    std::vector<double> hiding;
    std::vector<double> showing;
};

void benchmarkHiding(std::size_t count, int rounds, int roundsOfPeers) {
    const OpenWindows windows(count, [](std::size_t) { return std::string("bench"); });
    BareWindows bare(windows.ids);
    CurtainWindows curtain;
    curtain.waitUntil(false, count);
    const std::vector<WindowId> ids(windows.ids.begin(), windows.ids.end());

    const auto peer = [&](std::vector<std::string> command, bool isChained, bool isHidden) {
        return [&bare, &windows, command = std::move(command), isChained, isHidden] {
            runForEach(command, windows.ids, isChained);
            bare.waitUntil(isHidden);
        };
    };
    std::vector<Contender> contenders{
        {"Curtain",
         [&] {
             curtain.system().hide(ids);
             curtain.waitUntil(true, count);
         },
         [&] {
             curtain.system().show(ids);
             curtain.waitUntil(false, count);
         },
         {},
         {}},
        {"bare xcb",
         [&] {
             bare.request(true);
             bare.waitUntil(true);
         },
         [&] {
             bare.request(false);
             bare.waitUntil(false);
         },
         {},
         {}},
        {"wmctrl",
         peer({"wmctrl", "-i", "-r", "WINDOW", "-b", "add,hidden"}, false, true),
         peer({"wmctrl", "-i", "-r", "WINDOW", "-b", "remove,hidden"}, false, false),
         {},
         {}},
        {"xdotool",
         peer({"xdotool", "windowminimize", "WINDOW"}, true, true),
         peer({"xdotool", "windowmap", "WINDOW"}, true, false),
         {},
         {}},
    };
    const auto everybodyKnows = [&](bool isHidden) {
        curtain.waitUntil(isHidden, count);
        bare.waitUntil(isHidden);
    };
    for (int round = 0; round < rounds; ++round) {
        // The programs for the command line are slow and need fewer rounds for a steady figure.
        const std::size_t contending = round < roundsOfPeers ? contenders.size() : 2;
        for (auto& contender : std::span(contenders).first(contending)) {
            // Everybody finds the windows as the same predecessor leaves them.
            for (const bool isHiding : {true, false}) {
                bare.request(isHiding);
                everybodyKnows(isHiding);
            }
            for (const bool isHiding : {true, false}) {
                const auto& work = isHiding ? contender.hide : contender.show;
                (isHiding ? contender.hiding : contender.showing).push_back(millisecondsFor(work));
                everybodyKnows(isHiding);
            }
        }
    }
    for (const bool isHiding : {true, false}) {
        const auto value = [&](std::size_t index) {
            return median(isHiding ? contenders[index].hiding : contenders[index].showing);
        };
        std::printf("%4zu windows  %s %9.2f %9.2f %9.2f %9.2f %9.2f\n", count, isHiding ? "hide" : "show",
                    value(0), value(1), value(0) / value(1), value(2), value(3));
    }
}

void benchmarkSnapshot(std::size_t count, int rounds) {
    const OpenWindows windows(count, [](std::size_t index) { return "bench" + std::to_string(index % 20); });
    CurtainWindows().waitUntil(false, count);
    std::vector<double> curtain;
    std::vector<double> bare;
    std::uint64_t roundTrips = 0;
    for (int round = 0; round < rounds; ++round) {
        curtain.push_back(millisecondsFor([&] {
            CurtainWindows fresh;
            require(fresh.system().windows().size() == count, "not all windows were listed");
            roundTrips = fresh.connection().roundTrips();
        }));
        bare.push_back(
            millisecondsFor([&] { require(Bench::readProperties() == count, "not all windows were read"); }));
    }
    std::printf("%4zu windows  read %9.2f %9.2f %9.2f   %llu round trips against %d\n", count,
                median(curtain), median(bare), median(curtain) / median(bare),
                static_cast<unsigned long long>(roundTrips), Bench::readRoundTrips);
}

void benchmarkSwitchingOn(std::size_t targetCount, std::size_t runningCount, int rounds) {
    const auto name = [](std::size_t index) { return "target" + std::to_string(index); };
    const OpenWindows windows(runningCount, [&](std::size_t index) { return name(index * 199); });
    std::vector<std::string> targets;
    std::vector<std::string> running;
    for (std::size_t index = 0; index < targetCount; ++index) {
        targets.push_back(name(index));
    }
    for (std::size_t index = 0; index < runningCount; ++index) {
        running.push_back(name(index * 199));
    }
    CurtainWindows curtain;
    curtain.waitUntil(false, runningCount);
    LinuxPlatform::DesktopEntries entries{{}};
    LinuxPlatform::AppIdentity identity{entries, LinuxPlatform::ProcessTable("/proc")};
    LinuxPlatform::ScopedApps scopedApps(entries, curtain.mainQueue());
    LinuxPlatform::LinuxWorkspace workspace(curtain.system(), identity, entries, scopedApps,
                                            curtain.mainQueue());
    Curtain::SystemAppHiding hiding(workspace);
    CurtainCore::HideEngine engine(hiding);
    std::vector<double> all;
    std::vector<double> few;
    for (int round = 0; round < rounds; ++round) {
        for (const bool isAll : {true, false}) {
            (isAll ? all : few).push_back(millisecondsFor([&] {
                engine.activate(isAll ? targets : running);
                curtain.waitUntil(true, runningCount);
            }));
            engine.deactivate();
            curtain.waitUntil(false, runningCount);
        }
    }
    std::printf("%4zu targets, %zu of them running: %.2f ms; those %zu alone: %.2f ms, a share of %.0f %%\n",
                targetCount, runningCount, median(all), runningCount, median(few),
                100 * median(few) / median(all));
}

} // namespace

int main(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    std::printf("Medians in milliseconds, until every state is seen\n");
    std::printf("                     Curtain  bare xcb     ratio    wmctrl   xdotool\n");
    benchmarkHiding(1, 101, 15);
    benchmarkHiding(50, 31, 5);
    benchmarkHiding(200, 21, 3);
    benchmarkSnapshot(200, 9);
    benchmarkSwitchingOn(1000, 5, 15);
    return 0;
}
