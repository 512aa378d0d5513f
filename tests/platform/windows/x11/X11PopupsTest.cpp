#include "tests/platform/windows/x11/X11WindowFixture.h"
#include "tests/support/ChildProcess.h"

#include <gmock/gmock.h>

#include <array>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace {

using LinuxPlatform::WindowId;
using LinuxPlatform::XcbPointer;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

/// What programs show past the window manager.
struct X11PopupsTest : PlatformTests::X11WindowFixture {
    /// Left, top, width and height on the screen.
    using Place = std::tuple<int, int, int, int>;

    xcb_window_t create(std::string_view type = {}) {
        const auto popup = client.create("popup", "Popup");
        const std::uint32_t isOverride = 1;
        xcb_change_window_attributes(client.get(), popup, XCB_CW_OVERRIDE_REDIRECT, &isOverride);
        if (!type.empty()) {
            client.setNumbers(popup, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                              std::array{client.atom("_NET_WM_WINDOW_TYPE_" + std::string(type))});
        }
        return popup;
    }

    xcb_window_t openPopup(std::string_view type = {}) {
        const auto popup = create(type);
        client.map(popup);
        return popup;
    }

    xcb_window_t openPopupOf(xcb_window_t owner) {
        const auto popup = create();
        client.setNumbers(popup, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array{owner});
        client.map(popup);
        return popup;
    }

    xcb_window_t parentOf(xcb_window_t window) const {
        const XcbPointer<xcb_query_tree_reply_t> reply(
            xcb_query_tree_reply(client.get(), xcb_query_tree(client.get(), window), nullptr));
        return reply ? reply->parent : xcb_window_t{XCB_WINDOW_NONE};
    }

    Place placeOf(xcb_window_t window) const {
        auto* const xcb = client.get();
        const XcbPointer<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, window), nullptr));
        const XcbPointer<xcb_translate_coordinates_reply_t> corner(xcb_translate_coordinates_reply(
            xcb, xcb_translate_coordinates(xcb, window, client.root(), 0, 0), nullptr));
        return {corner->dst_x, corner->dst_y, size->width, size->height};
    }

    bool leavesTheScreen(xcb_window_t popup) {
        return spinUntil([&] { return !client.isViewable(popup); });
    }

    bool comesToTheScreen(xcb_window_t popup) {
        return spinUntil([&] { return client.isViewable(popup); });
    }

    /// What was there before has been seen when this is off the screen.
    void waitUntilAllIsSeen() { EXPECT_TRUE(leavesTheScreen(openPopup())); }
};

TEST_F(X11PopupsTest, LeavesTheScreenWithItsAppAndComesBackInItsPlace) {
    const auto window = openListed("a", "A");
    const auto popup = openPopup("NOTIFICATION");
    const auto place = placeOf(popup);
    hide(window);
    EXPECT_TRUE(leavesTheScreen(popup));
    EXPECT_EQ(placeOf(popup), place);
    show(window);
    EXPECT_TRUE(comesToTheScreen(popup));
    EXPECT_EQ(parentOf(popup), client.root());
    EXPECT_EQ(placeOf(popup), place);
}

TEST_F(X11PopupsTest, ThatAppearsWhileItsAppIsHiddenLeavesTheScreen) {
    const auto window = openListed("a", "A");
    hide(window);
    for (const auto* const type : {"", "NOTIFICATION", "NORMAL", "UTILITY", "DIALOG", "SPLASH"}) {
        EXPECT_TRUE(leavesTheScreen(openPopup(type))) << type;
    }
}

TEST_F(X11PopupsTest, GoesWhereItsProgramMovesIt) {
    const auto window = openListed("a", "A");
    hide(window);
    const auto popup = openPopup();
    ASSERT_TRUE(leavesTheScreen(popup));
    const std::array<std::uint32_t, 2> corner{500, 300};
    xcb_configure_window(client.get(), popup, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, corner.data());
    client.sync();
    show(window);
    ASSERT_TRUE(comesToTheScreen(popup));
    EXPECT_EQ(placeOf(popup), (Place{500, 300, 200, 150}));
}

TEST_F(X11PopupsTest, ThatItsProgramClosesAndOpensAgainIsTakenAgain) {
    const auto window = openListed("a", "A");
    hide(window);
    const auto popup = openPopup();
    ASSERT_TRUE(leavesTheScreen(popup));
    xcb_unmap_window(client.get(), popup);
    client.sync();
    ASSERT_TRUE(spinUntil([&] { return parentOf(popup) == client.root(); }));
    EXPECT_FALSE(client.isViewable(popup));
    client.map(popup);
    EXPECT_TRUE(leavesTheScreen(popup));
    EXPECT_TRUE(spinUntil([&] { return parentOf(popup) != client.root(); }));
    client.destroy(popup);
    waitUntilAllIsSeen();
    show(window);
}

TEST_F(X11PopupsTest, MenusTooltipsAndWhatIsDraggedAreLeftAlone) {
    const auto window = openListed("a", "A");
    std::vector<xcb_window_t> leftAlone;
    for (const auto* const type : {"MENU", "DROPDOWN_MENU", "POPUP_MENU", "TOOLTIP", "COMBO", "DND"}) {
        leftAlone.push_back(openPopup(type));
    }
    hide(window);
    leftAlone.push_back(openPopup("POPUP_MENU"));
    waitUntilAllIsSeen();
    for (const auto popup : leftAlone) {
        EXPECT_TRUE(client.isViewable(popup));
        EXPECT_EQ(find(popup), std::nullopt);
    }
}

TEST_F(X11PopupsTest, OfVisibleAppsAreLeftAlone) {
    const ChildProcess program({WINDOW_PROGRAM, "private", "1", "1"});
    const auto isThere = [&] {
        const auto& windows = system.windows();
        return !windows.empty() && windows.front().hints.className == "private";
    };
    ASSERT_TRUE(spinUntil(isThere));
    const auto foreign = static_cast<xcb_window_t>(system.windows().front().id);
    const auto foreignPopup = foreign + 1;
    ASSERT_TRUE(comesToTheScreen(foreignPopup));
    const auto window = openListed("a", "A");
    const auto own = openPopup("NOTIFICATION");
    hide(foreign);
    EXPECT_TRUE(leavesTheScreen(foreignPopup));
    EXPECT_TRUE(client.isViewable(own));
    EXPECT_FALSE(isHidden(window));
    show(foreign);
    EXPECT_TRUE(comesToTheScreen(foreignPopup));
}

TEST_F(X11PopupsTest, OfAProgramWithSeveralAppsFollowTheWindowThatTheyName) {
    const auto hidden = openListed("a", "A");
    const auto visible = openListed("b", "B");
    const auto ofHidden = openPopupOf(hidden);
    const auto ofVisible = openPopupOf(visible);
    const auto ofNone = openPopup();
    hide(hidden);
    EXPECT_TRUE(leavesTheScreen(ofHidden));
    EXPECT_TRUE(client.isViewable(ofVisible));
    EXPECT_TRUE(client.isViewable(ofNone)) << "it may be that of the visible one";
    hide(visible);
    EXPECT_TRUE(leavesTheScreen(ofVisible));
    EXPECT_TRUE(leavesTheScreen(ofNone));
    show(visible);
    EXPECT_TRUE(comesToTheScreen(ofVisible));
    EXPECT_TRUE(comesToTheScreen(ofNone));
    EXPECT_FALSE(client.isViewable(ofHidden));
}

TEST_F(X11PopupsTest, AppThatItsUserPutAwayKeepsItsPopups) {
    const auto putAway = openListed("a", "A");
    client.ask(putAway, "WM_CHANGE_STATE", {3});
    ASSERT_TRUE(spinUntil([&] { return isHidden(putAway); }));
    const ChildProcess program({WINDOW_PROGRAM, "private", "1", "1"});
    ASSERT_TRUE(spinUntil([&] { return system.windows().size() == 2; }));
    const auto foreign = static_cast<xcb_window_t>(system.windows().back().id);
    const auto popup = openPopup();
    hide(foreign);
    EXPECT_TRUE(leavesTheScreen(foreign + 1));
    EXPECT_TRUE(client.isViewable(popup)) << "nobody asked for that";
}

TEST_F(X11PopupsTest, ComesBackWithAWindowThatItsUserBringsBack) {
    const auto window = openListed("a", "A");
    const auto popup = openPopup();
    hide(window);
    ASSERT_TRUE(leavesTheScreen(popup));
    client.map(window);
    ASSERT_TRUE(spinUntil([&] { return !isHidden(window); }));
    EXPECT_TRUE(comesToTheScreen(popup));
    hide(window);
    EXPECT_TRUE(leavesTheScreen(popup));
}

TEST_F(X11PopupsTest, ComesBackToItsPlaceHoweverOurConnectionEnds) {
    const auto window = openListed("a", "A");
    const auto popup = openPopup();
    const auto place = placeOf(popup);
    hide(window);
    ASSERT_TRUE(leavesTheScreen(popup));
    const auto container = parentOf(popup);
    ASSERT_NE(container, client.root());
    xcb_kill_client(client.get(), container);
    client.sync();
    EXPECT_TRUE(client.isViewable(popup));
    EXPECT_EQ(parentOf(popup), client.root());
    EXPECT_EQ(placeOf(popup), place);
    show(window);
    EXPECT_TRUE(connection->isAlive());
}

} // namespace
