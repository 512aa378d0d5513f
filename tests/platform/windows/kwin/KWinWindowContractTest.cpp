#include "platform/linux/windows/kwin/KWinWindowSystem.h"
#include "tests/platform/windows/WindowFocusContract.h"
#include "tests/platform/windows/WindowSystemContract.h"
#include "tests/platform/windows/x11/X11WindowFixture.h"
#include "tests/support/StillClockQueue.h"

#include <QDBusConnection>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>

#include <unistd.h>

namespace TestSupport {
namespace {

/// A real KWin. The windows are those of an X11 program, which EWMH lets a test move about.
class KWinContractWorld {
public:
    KWinContractWorld() {
        EXPECT_TRUE(waitUntil([&] { return system_.knowsEveryWindow() && system_.windows().empty(); }));
    }

    LinuxPlatform::WindowSystem& system() { return system_; }
    LinuxPlatform::WindowId open(const std::string& name) {
        const auto window = x11_.client.create(name, name);
        x11_.client.setNumbers(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, std::array{process()});
        x11_.client.map(window);
        LinuxPlatform::WindowId id = 0;
        EXPECT_TRUE(waitUntil([&] {
            id = newestWindow();
            return id != 0 && !xcb_.contains(id);
        })) << name;
        xcb_[id] = window;
        return id;
    }
    static std::uint32_t process() { return static_cast<std::uint32_t>(getpid()); }
    void close(LinuxPlatform::WindowId window) { x11_.client.destroy(xcb_.at(window)); }
    void bringBack(LinuxPlatform::WindowId window) { focus(window); }

    template <class Condition>
    static bool waitUntil(const Condition& condition) {
        return spinUntil(condition, std::chrono::minutes(1));
    }

    std::optional<LinuxPlatform::WindowId> focused() const {
        const auto active = x11_.client.activeWindow();
        const auto found =
            std::ranges::find_if(xcb_, [&](const auto& known) { return known.second == active; });
        return found == xcb_.end() ? std::nullopt : std::optional(found->first);
    }
    void focus(LinuxPlatform::WindowId window) { x11_.activate(xcb_.at(window)); }

    void moveToSecondWorkspace(LinuxPlatform::WindowId window) { x11_.sendToDesktop(xcb_.at(window), 1); }
    int workspaceOf(LinuxPlatform::WindowId window) const {
        return static_cast<int>(x11_.client.desktop(xcb_.at(window)).value_or(99));
    }
    int workspace() const { return static_cast<int>(x11_.currentDesktop().value_or(99)); }
    void goToWorkspace(int number) { x11_.goToDesktop(static_cast<std::uint32_t>(number)); }

    void makeFullscreen(LinuxPlatform::WindowId window) { x11_.setState(xcb_.at(window), fullscreen); }
    bool isFullscreen(LinuxPlatform::WindowId window) const {
        return x11_.hasState(xcb_.at(window), fullscreen);
    }

private:
    static constexpr const char* fullscreen = "_NET_WM_STATE_FULLSCREEN";

    LinuxPlatform::WindowId newestWindow() {
        const auto& windows = system_.windows();
        return windows.empty() ? 0 : windows.back().id;
    }

    PlatformTests::X11WindowWorld x11_;
    StillClockQueue queue_;
    LinuxPlatform::KWinWindowSystem system_{QDBusConnection::sessionBus(), queue_,
                                            std::getenv("XDG_RUNTIME_DIR")};
    std::map<LinuxPlatform::WindowId, xcb_window_t> xcb_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(KWin, WindowSystemContract, KWinContractWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(KWin, WindowFocusContract, KWinContractWorld);

} // namespace
} // namespace TestSupport
