#include "tests/platform/windows/WindowFocusContract.h"
#include "tests/platform/windows/WindowOrderContract.h"
#include "tests/platform/windows/WindowSystemContract.h"
#include "tests/platform/windows/x11/X11WindowFixture.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

namespace TestSupport {
namespace {

/// A real window manager.
class X11ContractWorld {
public:
    LinuxPlatform::X11WindowSystem& system() { return x11_.system; }
    LinuxPlatform::WindowId open(const std::string& name) { return x11_.client.open(name, name); }
    static std::uint32_t process() { return static_cast<std::uint32_t>(getpid()); }
    void close(LinuxPlatform::WindowId window) { x11_.client.destroy(xcb(window)); }
    void bringBack(LinuxPlatform::WindowId window) {
        // As task lists do.
        x11_.client.ask(xcb(window), "_NET_ACTIVE_WINDOW", {PlatformTests::pager, XCB_CURRENT_TIME});
    }

    template <class Condition>
    static bool waitUntil(const Condition& condition) {
        return spinUntil(condition, std::chrono::minutes(1));
    }

    std::optional<LinuxPlatform::WindowId> focused() const {
        const auto window = x11_.client.activeWindow();
        return window == XCB_WINDOW_NONE ? std::nullopt : std::optional(LinuxPlatform::WindowId{window});
    }
    void focus(LinuxPlatform::WindowId window) { x11_.activate(xcb(window)); }

    void moveToSecondWorkspace(LinuxPlatform::WindowId window) { x11_.sendToDesktop(xcb(window), 1); }
    int workspaceOf(LinuxPlatform::WindowId window) const {
        return static_cast<int>(x11_.client.desktop(xcb(window)).value_or(99));
    }
    int workspace() const { return static_cast<int>(x11_.currentDesktop().value_or(99)); }
    void goToWorkspace(int number) { x11_.goToDesktop(static_cast<std::uint32_t>(number)); }

    std::vector<LinuxPlatform::WindowId> stackingOrder() const {
        const auto order = x11_.client.stackingOrder();
        return {order.begin(), order.end()};
    }

    void keepAbove(LinuxPlatform::WindowId window) { x11_.setState(xcb(window), "_NET_WM_STATE_ABOVE"); }

    void makeFullscreen(LinuxPlatform::WindowId window) { x11_.setState(xcb(window), fullscreen); }
    bool isFullscreen(LinuxPlatform::WindowId window) const { return x11_.hasState(xcb(window), fullscreen); }

private:
    static constexpr const char* fullscreen = "_NET_WM_STATE_FULLSCREEN";

    static xcb_window_t xcb(LinuxPlatform::WindowId window) { return static_cast<xcb_window_t>(window); }

    PlatformTests::X11WindowWorld x11_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(X11, WindowSystemContract, X11ContractWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(X11, WindowFocusContract, X11ContractWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(X11, WindowOrderContract, X11ContractWorld);

} // namespace
} // namespace TestSupport
