#pragma once

#include "platform/linux/windows/i3/I3WindowSystem.h"
#include "platform/linux/windows/x11/X11WindowSystem.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/platform/I3Desktop.h"
#include "tests/support/EventLoop.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/X11TestClient.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace PlatformTests {

/// An empty workspace of i3 or sway, and windows that a test opens there.
class I3WindowWorld {
public:
    I3WindowWorld() {
        EXPECT_TRUE(TestSupport::spinUntil([] { return I3Desktop::tree()->leaves().empty(); }))
            << I3Desktop::picture();
        I3Desktop::run("workspace 1");
        start();
    }

    void start() {
        system.reset();
        system = std::make_unique<LinuxPlatform::I3WindowSystem>(
            I3Desktop::socket(), queue, std::make_unique<LinuxPlatform::X11WindowSystem>(*connection, queue),
            Platform::HidingObstacle::waylandSession, LinuxPlatform::EarlierValue(state, "taken", "session"));
    }

    LinuxPlatform::WindowId open(const std::string& name) {
        // Side by side on one workspace, many of them would be nothing but edges.
        if (!windows.empty() && windows.size() % mostOnWorkspace == 0) {
            I3Desktop::run("workspace " + std::to_string(firstFurtherWorkspace + windows.size()));
        }
        const auto window = client.create(name, name);
        // An X server of a compositor shows what has been drawn.
        constexpr std::uint32_t white = 0xFFFFFF;
        xcb_change_window_attributes(client.get(), window, XCB_CW_BACK_PIXEL, &white);
        client.map(window);
        LinuxPlatform::WindowId id = 0;
        EXPECT_TRUE(TestSupport::spinUntil([&] {
            const auto& all = system->windows();
            const auto found = std::ranges::find_if(
                all, [&](const LinuxPlatform::Window& listed) { return !windows.contains(listed.id); });
            id = found != all.end() ? found->id : 0;
            return id != 0;
        })) << name;
        windows[id] = window;
        return id;
    }

    static constexpr std::size_t mostOnWorkspace = 25;
    static constexpr std::size_t firstFurtherWorkspace = 10;

    TestSupport::X11TestClient client;
    /// By what the window system calls them.
    std::map<LinuxPlatform::WindowId, xcb_window_t> windows;
    QtPlatform::QtMainQueue queue;
    TestSupport::MemoryUserDefaults state;
    std::unique_ptr<LinuxPlatform::X11Connection> connection = LinuxPlatform::X11Connection::open();
    std::unique_ptr<LinuxPlatform::I3WindowSystem> system;
};

} // namespace PlatformTests
