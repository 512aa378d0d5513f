#include "tests/platform/windows/x11/X11WindowFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>

#include <unistd.h>

namespace {

using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowId;
using LinuxPlatform::X11Connection;
using LinuxPlatform::X11WindowSystem;
using TestSupport::spinUntil;
using TestSupport::X11TestClient;

constexpr std::uint32_t pager = PlatformTests::pager;

/// Under a real window manager.
struct X11WindowSystemTest : PlatformTests::X11WindowFixture {};

TEST_F(X11WindowSystemTest, WindowsThatAreThereAreListedWithWhatTheySay) {
    const auto window = client.create("instance", "Class");
    client.setBytes(window, "_GTK_APPLICATION_ID", "org.example.App");
    client.setBytes(window, "_KDE_NET_WM_DESKTOP_FILE", "/usr/share/applications/example.desktop");
    client.map(window);
    ASSERT_TRUE(spinUntil([&] { return client.isListed(window); }));

    const auto other = X11Connection::open();
    X11WindowSystem late(*other, mainQueue);
    const auto& windows = late.windows();
    const auto found = std::ranges::find(windows, WindowId{window}, &Window::id);
    ASSERT_NE(found, windows.end());
    EXPECT_EQ(found->hints,
              (LinuxPlatform::WindowHints{"instance", "Class", "/usr/share/applications/example.desktop",
                                          "org.example.App", static_cast<std::uint32_t>(getpid())}));
    EXPECT_FALSE(found->isHidden);
    EXPECT_TRUE(found->isInTaskList);
}

TEST_F(X11WindowSystemTest, ProcessIsThatOfTheConnectionWhateverTheWindowSays) {
    const auto window = client.create("a", "A");
    client.setNumbers(window, "_NET_WM_PID", XCB_ATOM_CARDINAL, std::array{1U});
    client.map(window);
    waitUntilListed(window);
    EXPECT_EQ(find(window)->hints.process, static_cast<std::uint32_t>(getpid()));
}

TEST_F(X11WindowSystemTest, WindowsOfOneConnectionShareTheirClient) {
    X11TestClient other;
    const auto first = openListed("a", "A");
    const auto second = openListed("a", "A");
    const auto foreign = other.open("a", "A");
    waitUntilListed(foreign);
    EXPECT_EQ(find(first)->client, find(second)->client);
    EXPECT_NE(find(first)->client, find(foreign)->client);
}

TEST_F(X11WindowSystemTest, WindowsThatWereThereAtTheStartAreNotAnnounced) {
    const auto old = openListed("a", "A");
    const auto other = X11Connection::open();
    X11WindowSystem late(*other, mainQueue);
    std::vector<WindowId> opened;
    const auto handler = late.addEventHandler([&](WindowEvent event, const Window& window) {
        if (event == WindowEvent::opened) {
            opened.push_back(window.id);
        }
    });
    ASSERT_FALSE(late.windows().empty());
    const auto fresh = openListed("b", "B");
    ASSERT_TRUE(spinUntil([&] { return !opened.empty(); }));
    EXPECT_THAT(opened, testing::ElementsAre(WindowId{fresh})) << "not " << old;
}

TEST_F(X11WindowSystemTest, WindowThatIsPutBackIntoTheListIsOpenedAgain) {
    const auto window = openListed("a", "A");
    ASSERT_TRUE(waitForEvent(WindowEvent::opened, window));
    xcb_unmap_window(client.get(), window);
    client.sync();
    ASSERT_TRUE(spinUntil([&] { return !find(window); }));
    EXPECT_TRUE(system.exists(window));
    events.clear();
    client.map(window);
    EXPECT_TRUE(waitForEvent(WindowEvent::opened, window));
}

TEST_F(X11WindowSystemTest, HidingAndShowingTakesTheWindowOffTheScreenAndBack) {
    const auto window = openListed("a", "A");
    hide(window);
    const auto attributes = [&] {
        return LinuxPlatform::XcbPointer<xcb_get_window_attributes_reply_t>(xcb_get_window_attributes_reply(
            client.get(), xcb_get_window_attributes(client.get(), window), nullptr));
    };
    EXPECT_TRUE(spinUntil([&] { return attributes()->map_state != XCB_MAP_STATE_VIEWABLE; }));
    show(window);
    EXPECT_TRUE(spinUntil([&] { return attributes()->map_state == XCB_MAP_STATE_VIEWABLE; }));
}

TEST_F(X11WindowSystemTest, FullscreenMaximisedAndStickyWindowsComeBackAsTheyWere) {
    for (const auto* const state :
         {"_NET_WM_STATE_FULLSCREEN", "_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_SHADED"}) {
        const auto window = openListed("a", "A");
        setState(window, state);
        hide(window);
        show(window);
        EXPECT_TRUE(spinUntil([&] { return hasState(window, state); })) << state;
    }
    const auto sticky = openListed("a", "A");
    client.ask(sticky, "_NET_WM_DESKTOP", {0xFFFFFFFF, pager});
    ASSERT_TRUE(spinUntil([&] { return client.desktop(sticky) == 0xFFFFFFFF; }));
    hide(sticky);
    show(sticky);
    EXPECT_EQ(client.desktop(sticky), 0xFFFFFFFF);
}

TEST_F(X11WindowSystemTest, PanelsAndTheDesktopAreNoAppWindows) {
    for (const auto* const type : {"_NET_WM_WINDOW_TYPE_DOCK", "_NET_WM_WINDOW_TYPE_DESKTOP"}) {
        const auto window = client.create("a", "A");
        client.setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM, std::array{client.atom(type)});
        client.map(window);
        ASSERT_TRUE(spinUntil([&] { return client.isListed(window) && system.exists(window); }));
        EXPECT_EQ(find(window), std::nullopt) << type;
    }
}

TEST_F(X11WindowSystemTest, WindowThatSkipsTheTaskListIsToldApart) {
    const auto window = openListed("a", "A");
    setState(window, "_NET_WM_STATE_SKIP_TASKBAR");
    EXPECT_TRUE(spinUntil([&] { return !find(window)->isInTaskList; }));
}

TEST_F(X11WindowSystemTest, WindowThatChangesItsClassIsAnnouncedAgain) {
    const auto window = openListed("loader", "Loader");
    ASSERT_TRUE(waitForEvent(WindowEvent::opened, window));
    events.clear();
    client.setBytes(window, "WM_CLASS", std::string_view("player\0Player\0", 14));
    EXPECT_TRUE(waitForEvent(WindowEvent::opened, window));
    EXPECT_EQ(find(window)->hints.className, "Player");
}

TEST_F(X11WindowSystemTest, BrokenPropertiesAreSurvived) {
    const auto window = client.create("a", "A");
    xcb_delete_property(client.get(), window, XCB_ATOM_WM_CLASS);
    client.setBytes(window, "_NET_WM_PID", "not a number");
    client.setBytes(window, "_NET_WM_WINDOW_TYPE", "x");
    client.setNumbers(window, "_GTK_APPLICATION_ID", XCB_ATOM_CARDINAL, std::array{1U, 2U});
    client.setBytes(window, "_KDE_NET_WM_DESKTOP_FILE", std::string(1 << 20, 'x'));
    client.map(window);
    waitUntilListed(window);
    const auto hints = find(window)->hints;
    EXPECT_EQ(hints.className, "");
    EXPECT_EQ(hints.instanceName, "");
    EXPECT_EQ(hints.applicationId, "");
    EXPECT_EQ(hints.desktopFile.size(), 1024U) << "cut, not copied whole";

    client.setBytes(window, "WM_CLASS", "no zero byte at all");
    EXPECT_TRUE(spinUntil([&] { return find(window)->hints.instanceName == "no zero byte at all"; }));
    client.setBytes(window, "WM_CLASS", std::string(1 << 20, 'y'));
    EXPECT_TRUE(spinUntil([&] { return find(window)->hints.instanceName == std::string(1024, 'y'); }));
    client.setBytes(window, "WM_CLASS", std::string_view("\0\0\0", 3));
    EXPECT_TRUE(spinUntil([&] { return find(window)->hints.instanceName.empty(); }));
}

TEST_F(X11WindowSystemTest, EventsThatAClientSendsAreNotBelieved) {
    const auto window = openListed("a", "A");
    xcb_destroy_notify_event_t forged{};
    forged.response_type = XCB_DESTROY_NOTIFY;
    forged.event = window;
    forged.window = window;
    xcb_send_event(client.get(), 0, window, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&forged));
    client.sync();
    // Opened later, so whatever the forged event did has been done once it is there.
    openListed("b", "B");
    EXPECT_TRUE(system.exists(window)) << "even if the window manager is less careful";
}

} // namespace
