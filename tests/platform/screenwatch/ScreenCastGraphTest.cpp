#include "platform/linux/screenwatch/ScreenCastGraph.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using LinuxPlatform::ScreenCastGraph;

/// The programs and streams of a desktop on which the portal casts the screen to a browser.
struct ScreenCastGraphTest : testing::Test {
    static constexpr ScreenCastGraph::Id portal = 30;
    static constexpr ScreenCastGraph::Id browser = 31;
    static constexpr ScreenCastGraph::Id cast = 40;
    static constexpr ScreenCastGraph::Id receiver = 41;
    static constexpr ScreenCastGraph::Id link = 50;

    ScreenCastGraph graph;

    void SetUp() override {
        graph.clients[portal] = {"xdg-desktop-portal-wlr", "xdg-desktop-portal-wlr", "unrestricted", ""};
        graph.clients[browser] = {"Chromium input", "chromium", "portal", ""};
        graph.nodes[cast] = {"Video/Source", "xdg-desktop-portal-wlr", "", portal, false, true};
        graph.nodes[receiver] = {"Stream/Input/Video", "chromium", "", browser, false, true};
        graph.links[link] = {cast, receiver};
    }

    /// A source by a program of no particular name.
    void makeUnknown() {
        graph.clients[portal] = {"studio", "studio", "unrestricted", ""};
        graph.nodes[cast].name = "studio";
    }
};

TEST_F(ScreenCastGraphTest, NothingIsNoCast) {
    EXPECT_FALSE(ScreenCastGraph().isScreenCast());
}

TEST_F(ScreenCastGraphTest, PortalsCastIsOne) {
    EXPECT_TRUE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, CompositorsStreamIsOne) {
    graph.nodes[cast] = {"Stream/Output/Video", "mutter", "", portal, false, true};
    graph.clients[portal] = {"mutter", "mutter", "unrestricted", ""};
    graph.clients[browser].access = "unrestricted";
    EXPECT_TRUE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, CasterIsKnownByItsProgramToo) {
    graph.nodes[cast].name = "stream";
    graph.clients[browser].access = "unrestricted";
    EXPECT_TRUE(graph.isScreenCast());
    graph.clients[portal] = {"a name", "kwin_wayland", "unrestricted", ""};
    EXPECT_TRUE(graph.isScreenCast());
    graph.clients.erase(portal);
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, UnknownCasterIsKnownByThePortalsReceiver) {
    makeUnknown();
    EXPECT_TRUE(graph.isScreenCast());
    graph.clients[browser].access = "unrestricted";
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, DesktopsOwnPreviewsAreNone) {
    graph.clients[portal] = {"kwin_wayland", "kwin_wayland", "unrestricted", ""};
    graph.nodes[cast] = {"Stream/Output/Video", "kwin_wayland", "", portal, false, true};
    graph.clients[browser] = {"plasmashell", "plasmashell", "unrestricted", ""};
    EXPECT_FALSE(graph.isScreenCast()) << "the task bar's";
    graph.nodes[receiver].client = portal;
    EXPECT_FALSE(graph.isScreenCast()) << "the compositor's";
    graph.nodes[receiver].client = browser;
    graph.clients[browser] = {"plasmashell", "plasmashell", "portal", ""};
    EXPECT_TRUE(graph.isScreenCast()) << "whoever came through the portal is not the desktop";
    graph.clients[browser] = {"plasmashell", "recorder", "unrestricted", ""};
    EXPECT_TRUE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, DesktopsPreviewHidesNoOtherReceiver) {
    graph.clients[32] = {"plasmashell", "plasmashell", "unrestricted", ""};
    graph.nodes[42] = {"Stream/Input/Video", "plasmashell", "", 32, false, true};
    graph.links[51] = {cast, 42};
    EXPECT_TRUE(graph.isScreenCast());
    graph.remove(link);
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, NobodyReceivesIt) {
    graph.remove(link);
    EXPECT_FALSE(graph.isScreenCast());
    graph.links[link] = {receiver, cast};
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, CastThatPausesIsNone) {
    graph.nodes[cast].isRunning = false;
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, CamerasAreNone) {
    graph.nodes[cast].role = "Camera";
    EXPECT_FALSE(graph.isScreenCast());
    graph.nodes[cast].role.clear();
    graph.nodes[cast].isDevice = true;
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, CameraWithoutARoleIsNoneForWhoMayOnlySeeCameras) {
    makeUnknown();
    graph.clients[browser].portalRoles = "Camera";
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, SoundIsNone) {
    graph.nodes[cast].mediaClass = "Stream/Output/Audio";
    EXPECT_FALSE(graph.isScreenCast());
}

TEST_F(ScreenCastGraphTest, EndsWithItsParts) {
    for (const auto id : {cast, link}) {
        graph.remove(id);
        EXPECT_FALSE(graph.isScreenCast());
        SetUp();
    }
    graph.clear();
    EXPECT_FALSE(graph.isScreenCast());
}

} // namespace
