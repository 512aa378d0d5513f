#include "tests/platform/windows/x11/X11WindowFixture.h"
#include "tests/platform/workspace/PrivacyMode.h"
#include "tests/support/ChildProcess.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

using LinuxPlatform::Window;
using LinuxPlatform::WindowId;
using PlatformTests::pager;
using PlatformTests::PrivacyMode;
using testing::_;
using testing::Contains;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;

/// Privacy mode from the rules down to a real window manager.
struct X11PrivacyModeTest : PlatformTests::X11WindowFixture {
    PrivacyMode privacy{system, mainQueue};

    bool areHidden(const std::vector<xcb_window_t>& windows) {
        return std::ranges::all_of(windows, [this](auto window) { return isHidden(window); });
    }

    bool areVisible(const std::vector<xcb_window_t>& windows) {
        return std::ranges::all_of(windows,
                                   [this](auto window) { return find(window) && !isHidden(window); });
    }

    std::vector<xcb_window_t> openApps() {
        std::vector<xcb_window_t> apps;
        for (const auto* const name : {"ant", "bee", "zoo"}) {
            apps.push_back(openFocused(name, name));
            EXPECT_TRUE(waitForEvent(LinuxPlatform::WindowEvent::activated, apps.back()));
        }
        return apps;
    }

    void expectSilentHiding(const std::vector<xcb_window_t>& apps) {
        events.clear();
        privacy.engine.activate({"zoo", "bee", "ant"});
        ASSERT_TRUE(spinUntil([&] { return areHidden(apps); }));
        // What the window manager still had to say has been said once this has the focus.
        const auto last = openFocused("last", "Last");
        ASSERT_TRUE(waitForEvent(LinuxPlatform::WindowEvent::activated, last));
        for (const auto app : apps) {
            EXPECT_THAT(events, Not(Contains(Pair(_, WindowId{app}))));
        }
    }

    std::size_t countOf(const std::string& className, bool isHidden) {
        return static_cast<std::size_t>(std::ranges::count_if(system.windows(), [&](const Window& window) {
            return window.hints.className == className && window.isHidden == isHidden;
        }));
    }
};

TEST_F(X11PrivacyModeTest, SeveralAppsComeBackInTheirOrderAndTheFocusWithThem) {
    const auto zoo = openFocused("zoo", "Zoo");
    const auto front = openFocused("front", "Front");
    const auto ant = openFocused("ant", "Ant");
    const auto bee = openFocused("bee", "Bee");
    const auto secondZoo = openFocused("zoo", "Zoo");
    const auto secondAnt = openFocused("ant", "Ant");
    activate(secondZoo);
    const std::vector<xcb_window_t> order{zoo, front, ant, bee, secondAnt, secondZoo};
    ASSERT_TRUE(spinUntil([&] { return client.stackingOrder() == order; }));

    privacy.engine.activate({"ant", "bee", "zoo"});
    ASSERT_TRUE(spinUntil([&] {
        return areHidden({zoo, ant, bee, secondZoo, secondAnt}) && client.activeWindow() == front;
    }));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] {
        return areVisible({zoo, ant, bee, secondZoo, secondAnt}) && client.activeWindow() == secondZoo &&
               client.stackingOrder() == order;
    }));
}

TEST_F(X11PrivacyModeTest, FocusedWindowNeedNotBeTheTopmostToGetTheFocusBack) {
    const auto low = openFocused("low", "Low");
    const auto high = openFocused("high", "High");
    setState(high, "_NET_WM_STATE_ABOVE");
    activate(low);
    privacy.engine.activate({"low", "high"});
    ASSERT_TRUE(spinUntil([&] { return areHidden({low, high}) && client.activeWindow() != low; }));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return areVisible({low, high}) && client.activeWindow() == low; }));
}

TEST_F(X11PrivacyModeTest, AppThatHadNotTheFocusComesToTheFront) {
    const auto under = openFocused("private", "Private");
    const auto over = openFocused("private", "Private");
    const auto front = openFocused("front", "Front");
    activate(front);
    privacy.engine.activate({"private"});
    ASSERT_TRUE(spinUntil([&] { return areHidden({under, over}); }));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] {
        return areVisible({under, over}) && client.activeWindow() == over &&
               client.stackingOrder() == std::vector<xcb_window_t>{under, front, over};
    }));
}

TEST_F(X11PrivacyModeTest, RevealedAppComesToTheFrontAloneAndTheFocusIsForgottenWithIt) {
    const auto one = openFocused("one", "One");
    const auto two = openFocused("two", "Two");
    activate(one);
    privacy.engine.activate({"one", "two"});
    ASSERT_TRUE(spinUntil([&] { return areHidden({one, two}); }));
    privacy.engine.reveal("two");
    ASSERT_TRUE(spinUntil([&] { return areVisible({two}) && client.activeWindow() == two; }));
    EXPECT_TRUE(isHidden(one));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return areVisible({one}) && client.activeWindow() == one; }));
}

TEST_F(X11PrivacyModeTest, WindowThatAppearsWhileItsAppIsBeingHiddenIsHiddenToo) {
    const auto first = openFocused("private", "Private");
    const auto late = client.create("private", "Private");
    xcb_map_window(client.get(), late);
    xcb_flush(client.get());
    privacy.engine.activate({"private"});
    const auto later = client.create("private", "Private");
    client.setNumbers(later, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, std::array{first});
    client.map(later);
    EXPECT_TRUE(spinUntil([&] { return areHidden({first, late, later}); }));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return areVisible({first, late, later}); }));
}

TEST_F(X11PrivacyModeTest, HiddenWindowThatItsUserBringsBackIsHiddenAgainAndGivenBack) {
    const auto window = openFocused("private", "Private");
    const auto front = openFocused("front", "Front");
    privacy.engine.activate({"private"});
    ASSERT_TRUE(spinUntil([&] { return isHidden(window); }));
    client.ask(window, "_NET_ACTIVE_WINDOW", {pager, XCB_CURRENT_TIME});
    ASSERT_TRUE(spinUntil([&] { return !isHidden(window); }));
    EXPECT_TRUE(spinUntil([&] { return isHidden(window) && client.activeWindow() == front; }));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return areVisible({window}); }));
}

TEST_F(X11PrivacyModeTest, WindowThatItsUserHadPutAwayStaysAway) {
    const auto window = openFocused("private", "Private");
    const auto putAway = openFocused("private", "Private");
    hide(putAway);
    privacy.engine.activate({"private"});
    ASSERT_TRUE(spinUntil([&] { return isHidden(window); }));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return areVisible({window}) && client.activeWindow() == window; }));
    EXPECT_TRUE(isHidden(putAway));
}

TEST_F(X11PrivacyModeTest, WindowsOnAnotherWorkspaceComeBackThere) {
    const auto here = openFocused("private", "Private");
    const auto there = openFocused("private", "Private");
    const auto elsewhere = openFocused("far", "Far");
    for (const auto window : {there, elsewhere}) {
        client.ask(window, "_NET_WM_DESKTOP", {1, pager});
        ASSERT_TRUE(spinUntil([&] { return client.desktop(window) == 1U; }));
    }
    privacy.engine.activate({"private", "far"});
    ASSERT_TRUE(spinUntil([&] { return areHidden({here, there, elsewhere}); }));
    goToDesktop(1);
    EXPECT_TRUE(areHidden({here, there, elsewhere}));
    goToDesktop(0);
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] {
        return areVisible({here, there, elsewhere}) && client.activeWindow() == here;
    }));
    EXPECT_EQ(client.desktop(here), 0U);
    EXPECT_EQ(client.desktop(there), 1U);
    EXPECT_EQ(client.desktop(elsewhere), 1U);
    EXPECT_EQ(currentDesktop(), 0U);
}

TEST_F(X11PrivacyModeTest, EveryInstanceIsHiddenAndGivenBack) {
    const ChildProcess first({WINDOW_PROGRAM, "many", "2"});
    const ChildProcess second({WINDOW_PROGRAM, "many", "1"});
    const auto own = openListed("many", "many");
    ASSERT_TRUE(spinUntil([&] { return countOf("many", false) == 4; }));
    EXPECT_THAT(privacy.workspace.runningApplicationsWithBundleIdentifier("many"), SizeIs(3));
    privacy.engine.activate({"many"});
    EXPECT_TRUE(spinUntil([&] { return countOf("many", true) == 4; }));
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return countOf("many", false) == 4; }));
    EXPECT_TRUE(areVisible({own}));
}

TEST_F(X11PrivacyModeTest, InstanceThatItsUserHadPutAwayStaysAway) {
    const ChildProcess visible({WINDOW_PROGRAM, "many", "1"});
    ASSERT_TRUE(spinUntil([&] { return countOf("many", false) == 1; }));
    const auto taken = static_cast<xcb_window_t>(system.windows().front().id);
    const auto putAway = openFocused("many", "many");
    hide(putAway);
    privacy.engine.activate({"many"});
    ASSERT_TRUE(spinUntil([&] { return countOf("many", true) == 2; }));
    privacy.engine.deactivate();
    ASSERT_TRUE(spinUntil([&] { return areVisible({taken}) && client.activeWindow() == taken; }));
    // The window manager answers in order: had it been asked for that window too, it would have shown it by
    // now.
    openListed("last", "Last");
    EXPECT_TRUE(isHidden(putAway));
}

TEST_F(X11PrivacyModeTest, FocusThatPassesThroughAppsThatAreHiddenAnnouncesNone) {
    openFocused("front", "Front");
    expectSilentHiding(openApps());
}

TEST_F(X11PrivacyModeTest, FocusThatIsLeftWithNobodyAnnouncesNoApp) {
    expectSilentHiding(openApps());
}

TEST_F(X11PrivacyModeTest, AppThatQuitsBetweenQuestionAndHideHarmsNobody) {
    ChildProcess program({WINDOW_PROGRAM, "brief", "3"});
    const auto other = openListed("other", "Other");
    ASSERT_TRUE(spinUntil([&] { return countOf("brief", false) == 3; }));
    const auto instances = privacy.workspace.runningApplicationsWithBundleIdentifier("brief");
    ASSERT_THAT(instances, SizeIs(1));
    ASSERT_FALSE(instances[0]->isHidden());
    program.end(SIGKILL);
    instances[0]->hide();
    privacy.engine.activate({"brief", "other"});
    EXPECT_TRUE(spinUntil([&] { return isHidden(other) && system.windows().size() == 1; }));
    EXPECT_TRUE(instances[0]->isHidden());
    EXPECT_EQ(instances[0]->localizedName(), std::nullopt);
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return areVisible({other}); }));
    EXPECT_TRUE(connection->isAlive());
}

TEST_F(X11PrivacyModeTest, AppThatQuitsWhileItIsHiddenHarmsNobody) {
    ChildProcess program({WINDOW_PROGRAM, "brief", "3"});
    const auto other = openListed("other", "Other");
    ASSERT_TRUE(spinUntil([&] { return countOf("brief", false) == 3; }));
    privacy.engine.activate({"brief", "other"});
    ASSERT_TRUE(spinUntil([&] { return countOf("brief", true) == 3 && isHidden(other); }));
    program.end(SIGKILL);
    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] { return areVisible({other}) && countOf("brief", true) == 0; }));
}

} // namespace
