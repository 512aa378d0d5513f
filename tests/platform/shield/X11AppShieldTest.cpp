#include "platform/linux/shield/X11AppShield.h"
#include "tests/platform/windows/x11/X11WindowFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using LinuxPlatform::WindowHints;
using LinuxPlatform::WindowId;
using LinuxPlatform::X11AppShield;
using LinuxPlatform::XcbPointer;
using TestSupport::spinUntil;
using TestSupport::X11TestClient;

/// Apps are the classes of their windows here.
struct X11AppShieldTest : testing::Test {
    PlatformTests::EmptyDesktop emptyDesktop;
    X11TestClient client;
    X11TestClient others;
    QtPlatform::QtMainQueue mainQueue;
    std::vector<WindowId> known;
    std::unique_ptr<X11AppShield> shield = std::make_unique<X11AppShield>(
        X11AppShield::Apps{
            .windowsOf =
                [this](const std::string& app) { return app == "Private" ? known : std::vector<WindowId>{}; },
            .identify =
                [](WindowId /*window*/, const WindowHints& hints) {
                    return hints.className.empty() ? std::nullopt : std::optional(hints.className);
                }},
        mainQueue);

    xcb_window_t openListed(X11TestClient& owner, std::string_view app) {
        const auto window = owner.open("window", app);
        EXPECT_TRUE(spinUntil([&] { return owner.isListed(window); }));
        // Now it has its frame.
        TestSupport::waitForManager(owner);
        return window;
    }

    xcb_window_t openKnown() {
        const auto window = openListed(client, "Private");
        known.push_back(window);
        return window;
    }

    static xcb_window_t openPopup(X11TestClient& owner, std::string_view app, std::string_view type) {
        const auto popup = owner.create("popup", app);
        const std::uint32_t isOverride = 1;
        xcb_change_window_attributes(owner.get(), popup, XCB_CW_OVERRIDE_REDIRECT, &isOverride);
        owner.setNumbers(popup, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                         std::array{owner.atom("_NET_WM_WINDOW_TYPE_" + std::string(type))});
        owner.map(popup);
        return popup;
    }

    XcbPointer<xcb_query_tree_reply_t> tree(xcb_window_t window) const {
        return XcbPointer<xcb_query_tree_reply_t>(
            xcb_query_tree_reply(client.get(), xcb_query_tree(client.get(), window), nullptr));
    }

    /// What is on top in it, if that is there to cover it all.
    std::optional<xcb_window_t> coverIn(xcb_window_t window) const {
        const auto reply = tree(window);
        if (!reply || reply->children_len == 0) {
            return std::nullopt;
        }
        const auto topmost = xcb_query_tree_children(reply.get())[reply->children_len - 1];
        const XcbPointer<xcb_get_geometry_reply_t> size(
            xcb_get_geometry_reply(client.get(), xcb_get_geometry(client.get(), topmost), nullptr));
        const bool isCover = size && size->x == 0 && size->y == 0 && size->width > 10'000 &&
                             size->height > 10'000 && client.mapState(topmost) != XCB_MAP_STATE_UNMAPPED;
        return isCover ? std::optional(topmost) : std::nullopt;
    }

    bool isCovered(xcb_window_t window) const { return coverIn(window).has_value(); }

    xcb_window_t frameOf(xcb_window_t window) const {
        auto outermost = window;
        for (auto reply = tree(window); reply && reply->parent != client.root(); reply = tree(outermost)) {
            outermost = reply->parent;
        }
        return outermost;
    }

    bool getsCovered(xcb_window_t window) const {
        return spinUntil([&] { return isCovered(window); });
    }

    bool getsUncovered(xcb_window_t window) const {
        return spinUntil([&] { return !isCovered(window); });
    }

    /// Whatever was opened before has been judged when a later window is covered.
    void waitUntilAllIsJudged() { EXPECT_TRUE(getsCovered(client.open("late", "Private"))); }
};

TEST_F(X11AppShieldTest, CoversKnownWindowsAndTheirFrames) {
    const auto window = openKnown();
    shield->cover({"Private"});
    EXPECT_TRUE(getsCovered(window));
    EXPECT_NE(frameOf(window), window);
    EXPECT_TRUE(getsCovered(frameOf(window)));
}

TEST_F(X11AppShieldTest, CoversNewWindowsOfKnownAndUnknownProgramsAndTheirFrames) {
    openKnown();
    shield->cover({"Private"});
    X11TestClient program;
    for (auto* const owner : {&client, &program}) {
        const auto window = owner->open("window", "Private");
        EXPECT_TRUE(getsCovered(window));
        EXPECT_TRUE(spinUntil([&] { return frameOf(window) != window && isCovered(frameOf(window)); }));
    }
}

TEST_F(X11AppShieldTest, CoversMenusAndToolTips) {
    openKnown();
    shield->cover({"Private"});
    for (const auto* const type : {"POPUP_MENU", "TOOLTIP", "COMBO", "NOTIFICATION"}) {
        EXPECT_TRUE(getsCovered(openPopup(client, "Private", type))) << type;
    }
}

TEST_F(X11AppShieldTest, CoversNothingOfOtherAppsPanelsAndDesktops) {
    openKnown();
    const auto earlier = openListed(others, "Other");
    shield->cover({"Private"});
    std::vector<xcb_window_t> innocent{earlier, frameOf(earlier), others.open("window", "Other"),
                                       openPopup(others, "Other", "POPUP_MENU"),
                                       openPopup(client, "Other", "TOOLTIP")};
    for (const auto* const type : {"DOCK", "DESKTOP"}) {
        innocent.push_back(client.create("panel", "Private"));
        client.setNumbers(innocent.back(), "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                          std::array{client.atom("_NET_WM_WINDOW_TYPE_" + std::string(type))});
        client.map(innocent.back());
    }
    innocent.push_back(client.create("icon", "Private"));
    client.setNumbers(innocent.back(), "_XEMBED_INFO", client.atom("_XEMBED_INFO"), std::array{0U, 1U});
    client.map(innocent.back());
    waitUntilAllIsJudged();
    for (const auto window : innocent) {
        EXPECT_TRUE(getsUncovered(window)) << window;
        EXPECT_FALSE(isCovered(frameOf(window))) << window;
    }
}

TEST_F(X11AppShieldTest, UncoversAWindowThatBecomesThatOfAnotherApp) {
    shield->cover({"Private"});
    const auto window = openListed(client, "Private");
    ASSERT_TRUE(getsCovered(window));
    client.setBytes(window, "WM_CLASS", std::string_view("window\0Other\0", 13));
    EXPECT_TRUE(getsUncovered(window));
    EXPECT_TRUE(getsUncovered(frameOf(window)));
    client.setBytes(window, "WM_CLASS", std::string_view("window\0Private\0", 15));
    EXPECT_TRUE(getsCovered(window));
}

TEST_F(X11AppShieldTest, UncoversAnAppThatIsRevealedAndNoOther) {
    const auto window = openKnown();
    const auto other = openListed(others, "Other");
    shield->cover({"Private", "Other"});
    ASSERT_TRUE(getsCovered(window));
    ASSERT_TRUE(getsCovered(other));
    shield->cover({"Other"});
    EXPECT_TRUE(getsUncovered(window));
    EXPECT_TRUE(getsUncovered(frameOf(window)));
    EXPECT_TRUE(isCovered(other));
}

TEST_F(X11AppShieldTest, LeavesNothingBehindWhenItIsSwitchedOffOrGone) {
    const auto window = openKnown();
    for (int round = 0; round < 3; ++round) {
        shield->cover({"Private"});
        ASSERT_TRUE(getsCovered(frameOf(window)));
        shield->cover({});
        EXPECT_TRUE(getsUncovered(window));
        EXPECT_TRUE(getsUncovered(frameOf(window)));
        EXPECT_TRUE(spinUntil([&] { return tree(window)->children_len == 0; }));
    }
    shield->cover({"Private"});
    ASSERT_TRUE(getsCovered(window));
    shield.reset();
    EXPECT_TRUE(spinUntil([&] { return tree(window)->children_len == 0; }));
}

TEST_F(X11AppShieldTest, StaysOnTopOfWhatItsProgramPutsIntoTheWindow) {
    const auto window = openKnown();
    shield->cover({"Private"});
    const auto cover = spinUntil([&] { return isCovered(window); }) ? coverIn(window) : std::nullopt;
    ASSERT_TRUE(cover);
    const auto child = xcb_generate_id(client.get());
    xcb_create_window(client.get(), XCB_COPY_FROM_PARENT, child, window, 0, 0, 50, 50, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    client.map(child);
    const auto isAtTheTopAgain = [&] { return coverIn(window) == cover; };
    EXPECT_TRUE(spinUntil(isAtTheTopAgain));
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(client.get(), child, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    client.sync();
    EXPECT_TRUE(spinUntil(isAtTheTopAgain));
    xcb_unmap_subwindows(client.get(), window);
    client.sync();
    EXPECT_TRUE(spinUntil(isAtTheTopAgain));
    xcb_destroy_subwindows(client.get(), window);
    client.sync();
    EXPECT_TRUE(getsCovered(window));
}

TEST_F(X11AppShieldTest, CoversTwoHundredWindowsThatAreMappedAtOnce) {
    shield->cover({"Private"});
    std::vector<xcb_window_t> windows;
    for (int count = 0; count < 200; ++count) {
        windows.push_back(client.create("window", "Private"));
    }
    for (const auto window : windows) {
        xcb_map_window(client.get(), window);
    }
    client.sync();
    for (const auto window : windows) {
        EXPECT_TRUE(getsCovered(window));
    }
    const auto other = openListed(others, "Other");
    waitUntilAllIsJudged();
    EXPECT_FALSE(isCovered(other));
}

TEST_F(X11AppShieldTest, OutlivesProgramsThatFlickerAndDieUnderTheirCovers) {
    const auto window = openKnown();
    shield->cover({"Private"});
    ASSERT_TRUE(getsCovered(window));
    for (int times = 0; times < 100; ++times) {
        xcb_unmap_window(client.get(), window);
        client.map(window);
    }
    EXPECT_TRUE(getsCovered(window));
    for (int times = 0; times < 20; ++times) {
        auto program = std::make_unique<X11TestClient>();
        const auto theirs = program->open("window", "Private");
        if (times % 2 == 0) {
            EXPECT_TRUE(getsCovered(theirs));
        }
        program.reset();
        EXPECT_TRUE(spinUntil([&] { return !client.mapState(theirs); }));
    }
    TestSupport::waitForManager(client);
    waitUntilAllIsJudged();
    EXPECT_TRUE(isCovered(window));
}

} // namespace
