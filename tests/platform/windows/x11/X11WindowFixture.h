#pragma once

#include "platform/linux/windows/x11/X11WindowSystem.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/platform/desktopicons/EmptyDesktop.h"
#include "tests/platform/windows/WindowManagerQuestion.h"
#include "tests/support/EventLoop.h"
#include "tests/support/X11TestClient.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace PlatformTests {

using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowId;
using LinuxPlatform::X11Connection;
using LinuxPlatform::X11WindowSystem;
using TestSupport::spinUntil;
using TestSupport::X11TestClient;

inline constexpr std::uint32_t add = 1;
inline constexpr std::uint32_t pager = 2;

/// What the window system sees of the windows that a client opens.
struct X11WindowWorld {
    EmptyDesktop emptyDesktop;
    X11TestClient client;
    QtPlatform::QtMainQueue mainQueue;
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    X11WindowSystem system{*connection, mainQueue};

    /// What is there at the first reading is not announced: it has to be over before a test opens a window.
    X11WindowWorld() { EXPECT_THAT(system.windows(), testing::IsEmpty()); }
    ~X11WindowWorld() {
        if (currentDesktop()) {
            goToDesktop(0);
        }
    }
    X11WindowWorld(const X11WindowWorld&) = delete;
    X11WindowWorld& operator=(const X11WindowWorld&) = delete;

    std::optional<Window> find(xcb_window_t window) {
        const auto& windows = system.windows();
        const auto found = std::ranges::find(windows, WindowId{window}, &Window::id);
        return found == windows.end() ? std::nullopt : std::optional(*found);
    }

    bool isHidden(xcb_window_t window) {
        const auto found = find(window);
        return found && found->isHidden;
    }

    xcb_window_t openListed(std::string_view instanceName, std::string_view className) {
        const auto window = client.open(instanceName, className);
        waitUntilListed(window);
        return window;
    }

    /// New windows get the focus, late: a test that gives it to another window has to wait for that.
    xcb_window_t openFocused(std::string_view instanceName, std::string_view className) {
        const auto window = openListed(instanceName, className);
        EXPECT_TRUE(spinUntil([&] { return client.activeWindow() == window; }));
        return window;
    }

    /// And until it has its frame, its place and its states.
    void waitUntilListed(xcb_window_t window) {
        EXPECT_TRUE(spinUntil([&] { return find(window).has_value(); }));
        TestSupport::waitForManager(client);
    }

    /// Managers write that a window is hidden before they take it away, and what its app asks for in between
    /// has no effect.
    void hide(xcb_window_t window) {
        system.hide(std::array{WindowId{window}});
        EXPECT_TRUE(spinUntil([&] { return isHidden(window); }));
        EXPECT_TRUE(spinUntil([&] { return client.mapState(window) == XCB_MAP_STATE_UNMAPPED; }));
    }

    void show(xcb_window_t window) {
        system.show(std::array{WindowId{window}});
        EXPECT_TRUE(spinUntil([&] { return !isHidden(window); }));
    }

    void goToDesktop(std::uint32_t desktop) {
        client.ask(client.root(), "_NET_CURRENT_DESKTOP", {desktop, XCB_CURRENT_TIME});
        EXPECT_TRUE(spinUntil([&] { return currentDesktop() == desktop; }));
    }

    /// Absent where there is no window manager.
    std::optional<std::uint32_t> currentDesktop() const {
        const auto list = client.numbers(client.root(), "_NET_CURRENT_DESKTOP");
        return list.empty() ? std::nullopt : std::optional(list.front());
    }

    void activate(xcb_window_t window) {
        client.ask(window, "_NET_ACTIVE_WINDOW", {pager, XCB_CURRENT_TIME});
        EXPECT_TRUE(spinUntil([&] { return client.activeWindow() == window; }));
    }

    /// One or two states in one request.
    void setState(xcb_window_t window, std::string_view state, std::string_view secondState = {}) {
        const auto second = secondState.empty() ? xcb_atom_t{XCB_ATOM_NONE} : client.atom(secondState);
        client.ask(window, "_NET_WM_STATE", {add, client.atom(state), second, pager});
        EXPECT_TRUE(spinUntil([&] {
            return hasState(window, state) && (secondState.empty() || hasState(window, secondState));
        }));
    }

    bool hasState(xcb_window_t window, std::string_view state) const {
        return std::ranges::count(client.numbers(window, "_NET_WM_STATE"), client.atom(state)) > 0;
    }

    void sendToDesktop(xcb_window_t window, std::uint32_t desktop) {
        client.ask(window, "_NET_WM_DESKTOP", {desktop, pager});
        EXPECT_TRUE(spinUntil([&] { return client.desktop(window) == desktop; }));
    }
};

struct X11WindowFixture : testing::Test, X11WindowWorld {
    std::vector<std::pair<WindowEvent, WindowId>> events;
    Platform::Subscription subscription = system.addEventHandler(
        [this](WindowEvent event, const Window& window) { events.emplace_back(event, window.id); });

    bool waitForEvent(WindowEvent event, xcb_window_t window) {
        return spinUntil(
            [&] { return std::ranges::find(events, std::pair(event, WindowId{window})) != events.end(); });
    }
};

} // namespace PlatformTests
