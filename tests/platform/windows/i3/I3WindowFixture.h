#pragma once

#include "platform/linux/windows/i3/I3WindowSystem.h"
#include "platform/linux/windows/x11/X11WindowSystem.h"
#include "tests/platform/i3/I3Desktop.h"
#include "tests/support/EventLoop.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/StillClockQueue.h"
#include "tests/support/X11TestClient.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
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
        EXPECT_TRUE(TestSupport::spinUntil([this] { return system->knowsEveryWindow(); }));
    }

    LinuxPlatform::WindowId open(const std::string& name) {
        // Side by side on one workspace, many of them would be nothing but edges.
        if (!windows.empty() && windows.size() % mostOnWorkspace == 0) {
            I3Desktop::run("workspace " + std::to_string(firstFurtherWorkspace + windows.size()));
        }
        const auto window = client.create(name, name);
        const auto background = colourOf(window);
        xcb_change_window_attributes(client.get(), window, XCB_CW_BACK_PIXEL, &background);
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

    /// Waits until the window, which nothing covers, is seen just as large as the layout has it. sway 1.7
    /// takes the size of a picture that comes late for what the program wants.
    void waitUntilDrawn(LinuxPlatform::WindowId window) {
        const auto colour = colourOf(windows.at(window));
        EXPECT_TRUE(TestSupport::spinUntil([&] {
            const auto tree = I3Desktop::tree();
            const auto& rect = tree->find(window)->node->rect;
            const auto right = rect.x + rect.width;
            const auto bottom = rect.y + rect.height;
            return colourAt(rect.x + inset, bottom - inset) == colour &&
                   colourAt(right - inset, bottom - inset) == colour &&
                   colourAt(rect.x - inset, bottom - inset) != colour &&
                   colourAt(right + inset, bottom - inset) != colour &&
                   colourAt(right - inset, bottom + inset) != colour;
        })) << I3Desktop::picture();
    }

    static constexpr std::size_t mostOnWorkspace = 25;
    static constexpr std::size_t firstFurtherWorkspace = 10;

    TestSupport::X11TestClient client;
    /// By what the window system calls them.
    std::map<LinuxPlatform::WindowId, xcb_window_t> windows;
    TestSupport::StillClockQueue queue;
    TestSupport::MemoryUserDefaults state;
    std::unique_ptr<LinuxPlatform::X11Connection> connection = LinuxPlatform::X11Connection::open();
    std::unique_ptr<LinuxPlatform::I3WindowSystem> system;

private:
    /// More than a border.
    static constexpr int inset = 8;
    static constexpr std::uint32_t rgb = 0xFFFFFF;

    static std::uint32_t colourOf(xcb_window_t window) {
        constexpr std::uint32_t step = 0x305070;
        return ((window & 0xFFU) + 1) * step & rgb;
    }

    /// Absent outside of the screen.
    std::optional<std::uint32_t> colourAt(int x, int y) const {
        auto* const server = screen.get();
        const auto root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
        const LinuxPlatform::XcbPointer<xcb_get_image_reply_t> reply(xcb_get_image_reply(
            server,
            xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, root, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y), 1, 1, rgb),
            nullptr));
        if (!reply) {
            return std::nullopt;
        }
        std::uint32_t colour = 0;
        std::memcpy(&colour, xcb_get_image_data(reply.get()), sizeof colour);
        return colour & rgb;
    }

    /// That of the whole session.
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> screen{
        xcb_connect(std::getenv("VIRTUAL_DESKTOP_SCREEN"), nullptr), &xcb_disconnect};
};

} // namespace PlatformTests
