#include "tests/platform/windows/x11/X11WindowFixture.h"
#include "tests/support/ChildProcess.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace {

using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowId;
using LinuxPlatform::XcbPointer;
using PlatformTests::pager;
using testing::ElementsAre;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

/// Windows of every kind leave the screen and come back as they were.
struct X11WindowKindsTest : PlatformTests::X11WindowFixture {
    /// Left, top, width and height on the screen.
    using Place = std::tuple<int, int, int, int>;

    Place placeOf(xcb_window_t window) const {
        auto* const xcb = client.get();
        const XcbPointer<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, window), nullptr));
        const XcbPointer<xcb_translate_coordinates_reply_t> corner(xcb_translate_coordinates_reply(
            xcb, xcb_translate_coordinates(xcb, window, client.root(), 0, 0), nullptr));
        return {corner->dst_x, corner->dst_y, size->width, size->height};
    }

    bool isOnScreen(xcb_window_t window) const {
        const XcbPointer<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
            client.get(), xcb_get_window_attributes(client.get(), window), nullptr));
        return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    std::set<std::uint32_t> statesOf(xcb_window_t window) const {
        const auto list = client.numbers(window, "_NET_WM_STATE");
        std::set<std::uint32_t> states(list.begin(), list.end());
        for (const auto* const fleeting : {"_NET_WM_STATE_FOCUSED", "_NET_WM_STATE_DEMANDS_ATTENTION"}) {
            states.erase(client.atom(fleeting));
        }
        return states;
    }

    bool doesManagerKnow(std::string_view hint) const {
        return std::ranges::count(client.numbers(client.root(), "_NET_SUPPORTED"), client.atom(hint)) > 0;
    }

    xcb_window_t openDialog(xcb_window_t owner) {
        const auto dialog = client.create("a", "A");
        client.setNumbers(dialog, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array{owner});
        client.setNumbers(dialog, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                          std::array{client.atom("_NET_WM_WINDOW_TYPE_DIALOG")});
        client.map(dialog);
        waitUntilListed(dialog);
        return dialog;
    }

    xcb_window_t openTyped(std::string_view type) {
        const auto window = client.create("a", "A");
        client.setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                          std::array{client.atom("_NET_WM_WINDOW_TYPE_" + std::string(type))});
        client.map(window);
        waitUntilListed(window);
        return window;
    }

    void hideAll(const std::vector<xcb_window_t>& windows) {
        system.hide(std::vector<WindowId>(windows.begin(), windows.end()));
        EXPECT_TRUE(spinUntil([&] {
            return std::ranges::all_of(windows,
                                       [&](auto each) { return isHidden(each) && !isOnScreen(each); });
        }));
    }

    void showAll(const std::vector<xcb_window_t>& windows) {
        system.show(std::vector<WindowId>(windows.begin(), windows.end()));
        EXPECT_TRUE(spinUntil([&] {
            return std::ranges::all_of(windows,
                                       [&](auto each) { return !isHidden(each) && isOnScreen(each); });
        }));
    }

    void expectSameAfterHiding(xcb_window_t window) {
        const auto place = placeOf(window);
        const auto states = statesOf(window);
        const auto desktop = client.desktop(window);
        hideAll({window});
        showAll({window});
        // The place comes after the states where the window manager fits the window in anew.
        EXPECT_TRUE(spinUntil([&] { return placeOf(window) == place; }));
        EXPECT_TRUE(spinUntil([&] { return statesOf(window) == states; }));
        EXPECT_EQ(client.desktop(window), desktop);
    }
};

TEST_F(X11WindowKindsTest, DialogsGoAndComeWithTheirWindow) {
    const auto window = openListed("a", "A");
    const auto dialog = openDialog(window);
    const auto question = openDialog(dialog);
    const auto palette = client.create("a", "A");
    client.setNumbers(palette, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array{window});
    client.setNumbers(palette, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                      std::array{client.atom("_NET_WM_WINDOW_TYPE_UTILITY")});
    client.map(palette);
    waitUntilListed(palette);
    const std::vector<xcb_window_t> family{window, dialog, question, palette};
    const auto order = client.stackingOrder();
    hideAll(family);
    showAll(family);
    hideAll({question, palette, dialog, window});
    showAll({palette, window, question, dialog});
    EXPECT_TRUE(spinUntil([&] { return client.stackingOrder() == order; }));
}

TEST_F(X11WindowKindsTest, DialogOfAnotherProgramComesBackWithTheWindowThatItBelongsTo) {
    const auto window = openListed("a", "A");
    TestSupport::X11TestClient other;
    const auto dialog = other.create("chooser", "Chooser");
    other.setNumbers(dialog, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array{window});
    other.map(dialog);
    waitUntilListed(dialog);
    hide(window);
    EXPECT_TRUE(spinUntil([&] { return isHidden(dialog); })) << "the window manager sees to that";
    show(window);
    EXPECT_TRUE(spinUntil([&] { return !isHidden(dialog) && isOnScreen(dialog); }));
}

TEST_F(X11WindowKindsTest, WindowsOfAGroupAreHiddenOneByOne) {
    constexpr std::uint32_t hasGroup = 64;
    std::vector<xcb_window_t> group;
    for (int count = 0; count < 3; ++count) {
        const auto window = client.create("a", "A");
        const auto leader = group.empty() ? window : group.front();
        client.setNumbers(window, "WM_HINTS", XCB_ATOM_WM_HINTS,
                          std::array<std::uint32_t, 9>{hasGroup, 0, 0, 0, 0, 0, 0, 0, leader});
        client.map(window);
        waitUntilListed(window);
        group.push_back(window);
    }
    hideAll({group[1]});
    EXPECT_FALSE(isHidden(group[0]));
    EXPECT_FALSE(isHidden(group[2]));
    hideAll(group);
    showAll(group);
}

TEST_F(X11WindowKindsTest, WindowsOfTheUsualTypesComeBackAsTheyWere) {
    for (const auto* const type : {"DIALOG", "UTILITY", "NORMAL"}) {
        SCOPED_TRACE(type);
        expectSameAfterHiding(openTyped(type));
    }
}

TEST_F(X11WindowKindsTest, WindowsThatTheManagerRefusesToHideAreSaidToBeVisible) {
    for (const auto* const type : {"TOOLBAR", "MENU", "SPLASH"}) {
        SCOPED_TRACE(type);
        const auto window = openTyped(type);
        system.hide(std::array{WindowId{window}});
        // The window manager answers in order.
        setState(window, "_NET_WM_STATE_ABOVE");
        EXPECT_TRUE(spinUntil([&] { return isHidden(window) != isOnScreen(window); }));
        show(window);
    }
}

TEST_F(X11WindowKindsTest, WindowsInEveryStateComeBackAsTheyWere) {
    struct Case {
        std::string_view state;
        std::string_view secondState;
    };
    for (const auto& [state, secondState] : {Case{"_NET_WM_STATE_FULLSCREEN", {}},
                                             {"_NET_WM_STATE_MAXIMIZED_VERT", {}},
                                             {"_NET_WM_STATE_MAXIMIZED_HORZ", {}},
                                             {"_NET_WM_STATE_MAXIMIZED_VERT", "_NET_WM_STATE_MAXIMIZED_HORZ"},
                                             {"_NET_WM_STATE_STICKY", {}},
                                             {"_NET_WM_STATE_ABOVE", {}},
                                             {"_NET_WM_STATE_BELOW", {}},
                                             {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}}) {
        if (!doesManagerKnow(state)) {
            continue;
        }
        SCOPED_TRACE(state);
        const auto window = openListed("a", "A");
        setState(window, state, secondState);
        // The window manager answers in order: now the window has the place that goes with its state.
        setState(window, "_NET_WM_STATE_SKIP_PAGER");
        expectSameAfterHiding(window);
    }
}

TEST_F(X11WindowKindsTest, RolledUpWindowComesBackRolledUp) {
    const auto window = openListed("a", "A");
    setState(window, "_NET_WM_STATE_SHADED");
    hide(window);
    show(window);
    EXPECT_TRUE(spinUntil([&] { return hasState(window, "_NET_WM_STATE_SHADED"); }));
}

TEST_F(X11WindowKindsTest, WindowsOnAllDesktopsStayThere) {
    constexpr std::uint32_t allDesktops = 0xFFFFFFFF;
    const auto window = openListed("a", "A");
    client.ask(window, "_NET_WM_DESKTOP", {allDesktops, pager});
    ASSERT_TRUE(spinUntil([&] { return client.desktop(window) == allDesktops; }));
    // The window manager answers in order: now the window has the states that go with it.
    setState(window, "_NET_WM_STATE_SKIP_PAGER");
    expectSameAfterHiding(window);
}

TEST_F(X11WindowKindsTest, WindowsWithoutAFrameComeBackAsTheyWere) {
    const auto window = client.create("a", "A");
    client.setNumbers(window, "_MOTIF_WM_HINTS", client.atom("_MOTIF_WM_HINTS"),
                      std::array<std::uint32_t, 5>{2, 0, 0, 0, 0});
    client.map(window);
    waitUntilListed(window);
    expectSameAfterHiding(window);
}

TEST_F(X11WindowKindsTest, WindowsThatFillHalfOfTheScreenStayInTheirPlace) {
    const auto window = openListed("a", "A");
    constexpr std::uint32_t everything = 0xFU << 8U;
    client.ask(window, "_NET_MOVERESIZE_WINDOW", {everything | pager << 12U, 640, 0, 630, 700});
    ASSERT_TRUE(spinUntil([&] { return std::get<2>(placeOf(window)) == 630; }));
    expectSameAfterHiding(window);
}

TEST_F(X11WindowKindsTest, WindowThatSaysNothingOfItsProcessHasThatOfItsConnection) {
    const auto window = openListed("a", "A");
    ASSERT_TRUE(client.numbers(window, "_NET_WM_PID").empty());
    EXPECT_EQ(find(window)->hints.process, static_cast<std::uint32_t>(getpid()));
}

TEST_F(X11WindowKindsTest, EveryProcessHasItsWindows) {
    const ChildProcess first({WINDOW_PROGRAM, "many", "2"});
    ChildProcess second({WINDOW_PROGRAM, "many", "1"});
    const auto processes = [&] {
        std::multiset<std::uint32_t> result;
        for (const auto& window : system.windows()) {
            result.insert(window.hints.process.value_or(0));
        }
        return result;
    };
    const auto one = static_cast<std::uint32_t>(first.id());
    const auto two = static_cast<std::uint32_t>(second.id());
    EXPECT_TRUE(spinUntil([&] { return processes() == std::multiset<std::uint32_t>{one, one, two}; }));
    second.end(SIGKILL);
    EXPECT_TRUE(spinUntil([&] { return processes() == std::multiset<std::uint32_t>{one, one}; }));
}

TEST_F(X11WindowKindsTest, WindowThatStartsPutAwayIsHiddenAndNotAnnouncedAsBack) {
    constexpr std::uint32_t hasInitialState = 2;
    constexpr std::uint32_t iconic = 3;
    const auto window = client.create("a", "A");
    client.setNumbers(window, "WM_HINTS", XCB_ATOM_WM_HINTS,
                      std::array<std::uint32_t, 9>{hasInitialState, 0, iconic, 0, 0, 0, 0, 0, 0});
    client.map(window);
    waitUntilListed(window);
    EXPECT_TRUE(spinUntil([&] { return isHidden(window); }));
    EXPECT_TRUE(waitForEvent(WindowEvent::opened, window));
    EXPECT_THAT(events, ElementsAre(std::pair(WindowEvent::opened, WindowId{window})));
}

TEST_F(X11WindowKindsTest, HiddenWindowThatItsAppWithdrawsAndShowsAgainIsOpenedAgain) {
    const auto window = openListed("a", "A");
    hide(window);
    // As a program does that goes into the tray: unmapping is not enough where the window is unmapped
    // already.
    xcb_unmap_notify_event_t withdrawal{};
    withdrawal.response_type = XCB_UNMAP_NOTIFY;
    withdrawal.event = client.root();
    withdrawal.window = window;
    xcb_unmap_window(client.get(), window);
    xcb_send_event(client.get(), 0, client.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&withdrawal));
    client.sync();
    ASSERT_TRUE(spinUntil([&] { return !find(window); }));
    events.clear();
    client.map(window);
    EXPECT_TRUE(waitForEvent(WindowEvent::opened, window));
    EXPECT_TRUE(spinUntil([&] { return find(window) && !isHidden(window); }));
}

TEST_F(X11WindowKindsTest, ClassesOfAnyCharactersAreTaken) {
    const auto window = openListed("<b>bold</b> &amp; \x01\x1b[31m\n\"'\\", "<i>\t\r\x7f</i>");
    EXPECT_EQ(find(window)->hints.instanceName, "<b>bold</b> &amp; \x01\x1b[31m\n\"'\\");
    EXPECT_EQ(find(window)->hints.className, "<i>\t\r\x7f</i>");
    client.setBytes(window, "_NET_WM_NAME", "<b>\x01</b>\xff\xfe");
    const auto foreign = openListed("caf\xc3\xa9", "\xd0\x9f\xd0\xbe");
    EXPECT_EQ(find(foreign)->hints.instanceName, "caf\xc3\xa9");
    EXPECT_EQ(find(foreign)->hints.className, "\xd0\x9f\xd0\xbe");
}

TEST_F(X11WindowKindsTest, ClassThatIsNotUnicodeIsTakenForLatin1) {
    const auto window = openListed("caf\xe9", "Caf\xe9\xff");
    EXPECT_EQ(find(window)->hints.instanceName, "caf\xc3\xa9");
    EXPECT_EQ(find(window)->hints.className, "Caf\xc3\xa9\xc3\xbf");
}

TEST_F(X11WindowKindsTest, WindowsThatComeAndGoAtOnceLeaveNothingBehind) {
    TestSupport::X11TestClient busy;
    std::vector<xcb_window_t> windows;
    for (int count = 0; count < 200; ++count) {
        windows.push_back(busy.open("fleeting", "Fleeting"));
        if (count % 3 == 0) {
            system.hide(std::array{WindowId{windows.back()}});
            busy.destroy(windows.back());
        }
        static_cast<void>(system.windows());
        if (count % 3 == 1) {
            busy.destroy(windows.back());
            system.show(std::array{WindowId{windows.back()}});
        }
    }
    for (const auto window : windows) {
        xcb_destroy_window(busy.get(), window);
    }
    busy.sync();
    EXPECT_TRUE(spinUntil([&] { return system.windows().empty(); }));
    for (const auto window : windows) {
        EXPECT_FALSE(system.exists(window));
    }
    EXPECT_TRUE(connection->isAlive());
}

} // namespace
