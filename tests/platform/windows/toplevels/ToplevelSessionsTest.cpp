#include "platform/linux/SessionWindows.h"
#include "platform/linux/windows/toplevels/ToplevelWindowSystem.h"
#include "tests/platform/windows/WindowSystemContract.h"
#include "tests/platform/windows/x11/X11WindowFixture.h"
#include "tests/support/StillClockQueue.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace TestSupport {
namespace {

using LinuxPlatform::WindowId;

std::filesystem::path waylandSocket() {
    return std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / std::getenv("WAYLAND_DISPLAY");
}

std::uint32_t widthOf(const X11TestClient& client, xcb_window_t window) {
    const LinuxPlatform::XcbPointer<xcb_get_geometry_reply_t> place(
        xcb_get_geometry_reply(client.get(), xcb_get_geometry(client.get(), window), nullptr));
    return place ? place->width : 0;
}

/// Compositors know only of what has been drawn. labwc forgets a window whose first picture reaches it before
/// the X server's message whose picture that is; what a mapped window asks for, it reads after that message.
xcb_window_t openDrawn(X11TestClient& client, const std::string& name) {
    const auto window = client.create(name, name);
    client.map(window);
    EXPECT_TRUE(spinUntil([&] { return client.isViewable(window); }, std::chrono::minutes(1))) << name;
    const std::uint32_t width = widthOf(client, window) + 1;
    xcb_configure_window(client.get(), window, XCB_CONFIG_WINDOW_WIDTH, &width);
    EXPECT_TRUE(spinUntil([&] { return widthOf(client, window) == width; }, std::chrono::minutes(1))) << name;
    constexpr std::uint32_t white = 0xFFFFFF;
    xcb_change_window_attributes(client.get(), window, XCB_CW_BACK_PIXEL, &white);
    xcb_clear_area(client.get(), 0, window, 0, 0, 0, 0);
    client.sync();
    return window;
}

/// A real compositor that lets others minimise windows. The windows are those of an X11 program.
class CompositorContractWorld {
public:
    CompositorContractWorld() {
        EXPECT_TRUE(waitUntil([&] { return system_.knowsEveryWindow() && system_.windows().empty(); }));
    }

    LinuxPlatform::WindowSystem& system() { return system_; }
    WindowId open(const std::string& name) {
        const auto window = openDrawn(x11_.client, name);
        WindowId id = 0;
        EXPECT_TRUE(waitUntil([&] {
            const auto& windows = system_.windows();
            id = windows.empty() ? 0 : windows.back().id;
            return id != 0 && !xcb_.contains(id);
        })) << name;
        xcb_[id] = window;
        return id;
    }
    static std::optional<std::uint32_t> process() { return std::nullopt; }
    void close(WindowId window) { x11_.client.destroy(xcb_.at(window)); }
    void bringBack(WindowId window) { x11_.activate(xcb_.at(window)); }

    template <class Condition>
    static bool waitUntil(const Condition& condition) {
        return spinUntil(condition, std::chrono::minutes(1));
    }

private:
    PlatformTests::X11WindowWorld x11_;
    StillClockQueue queue_;
    LinuxPlatform::ToplevelWindowSystem system_{waylandSocket(), queue_,
                                                LinuxPlatform::ToplevelWindowSystem::Minimising::known};
    std::map<WindowId, xcb_window_t> xcb_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Compositor, WindowSystemContract, CompositorContractWorld);

/// In a session whose compositor lists windows and does not minimise them when it is asked to.
TEST(ToplevelIgnoredHidingTest, IsFoundOutAndTheWindowStaysVisible) {
    PlatformTests::X11WindowWorld x11;
    LinuxPlatform::SessionEnvironment session;
    session.kind = LinuxPlatform::SessionKind::waylandWithX;
    session.waylandSocket = waylandSocket();
    const auto system = LinuxPlatform::windowsOfSession(session, x11.connection.get(), x11.mainQueue);
    openDrawn(x11.client, "a");
    ASSERT_TRUE(spinUntil([&] { return system->knowsEveryWindow() && system->windows().size() == 1; }));
    const std::array window{system->windows().front().id};
    EXPECT_EQ(system->hidingObstacle(), Platform::HidingObstacle::waylandSession)
        << "it has shown nothing yet";
    system->hide(window);
    bool wasThoughtSafe = false;
    EXPECT_TRUE(spinUntil([&] {
        wasThoughtSafe = wasThoughtSafe || !system->hidingObstacle();
        return system->hidingObstacle() == Platform::HidingObstacle::windowManagerIgnoresHiding;
    }));
    EXPECT_FALSE(wasThoughtSafe);
    EXPECT_FALSE(system->windows().front().isHidden);
    EXPECT_TRUE(system->knowsEveryWindow());
}

} // namespace
} // namespace TestSupport
