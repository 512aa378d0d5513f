#pragma once

#include "tests/platform/windows/WindowSystemContract.h"

namespace TestSupport {

/// What every window system does in a session with a focus and workspaces. On top of the contract of window
/// systems a world has
/// - `focused()`, the window that has the focus, if any; new windows get it,
/// - `focus(window)`, by which the user gives the focus to a window,
/// - `moveToSecondWorkspace(window)`, `workspaceOf(window)` and `workspace()`, the one that is shown,
/// numbered
///   from 0,
/// - `goToWorkspace(number)`,
/// - `makeFullscreen(window)` and `isFullscreen(window)`.
/// Each of them returns when it has been done.
template <class World>
struct WindowFocusContract : WindowSystemContract<World> {
    using WindowId = LinuxPlatform::WindowId;

    WindowId openFocused(const std::string& name) {
        const auto window = this->open(name);
        EXPECT_TRUE(this->waitUntil([&] { return this->world.focused() == window; })) << name;
        return window;
    }

    WindowId openElsewhere(const std::string& name) {
        const auto window = openFocused(name);
        this->world.moveToSecondWorkspace(window);
        return window;
    }

    void activate(const std::vector<WindowId>& windows) { this->system().activate(windows); }
};

TYPED_TEST_SUITE_P(WindowFocusContract);

TYPED_TEST_P(WindowFocusContract, ActivatedWindowIsAnnounced) {
    using LinuxPlatform::WindowEvent;
    const auto first = this->openFocused("first");
    const auto second = this->openFocused("second");
    // What happens between two looks at the session is one change.
    ASSERT_TRUE(this->waitForEvent(WindowEvent::activated, second));
    this->events.clear();
    this->world.focus(first);
    ASSERT_TRUE(this->waitForEvent(WindowEvent::activated, first));
    this->events.clear();
    this->world.focus(second);
    EXPECT_TRUE(this->waitForEvent(WindowEvent::activated, second));
}

TYPED_TEST_P(WindowFocusContract, ShowingChangesNeitherFocusNorWorkspace) {
    const auto window = this->openFocused("first");
    const auto elsewhere = this->openElsewhere("elsewhere");
    const auto front = this->openFocused("front");
    this->hide(window);
    this->hide(elsewhere);
    this->show(window);
    this->show(elsewhere);
    EXPECT_TRUE(this->waitUntil([&] { return this->world.workspaceOf(window) == 0; }));
    EXPECT_TRUE(this->waitUntil([&] { return this->world.workspaceOf(elsewhere) == 1; }));
    EXPECT_TRUE(this->waitUntil([&] { return this->world.focused() == front; }));
    EXPECT_EQ(this->world.workspace(), 0);
}

TYPED_TEST_P(WindowFocusContract, WindowOnAnotherWorkspaceIsVisibleAndCanBeHidden) {
    this->openFocused("here");
    const auto window = this->openElsewhere("elsewhere");
    EXPECT_FALSE(this->isHidden(window));
    this->hide(window);
    this->world.goToWorkspace(1);
    EXPECT_TRUE(this->isHidden(window));
    this->world.goToWorkspace(0);
    this->show(window);
    EXPECT_TRUE(this->waitUntil([&] { return this->world.workspaceOf(window) == 1; }));
}

TYPED_TEST_P(WindowFocusContract, FullscreenWindowComesBackAsItWas) {
    this->openFocused("other");
    const auto window = this->openFocused("first");
    this->world.makeFullscreen(window);
    this->hide(window);
    this->show(window);
    EXPECT_TRUE(this->waitUntil([&] { return this->world.isFullscreen(window); }));
}

TYPED_TEST_P(WindowFocusContract, FocusThatPassesThroughWindowsThatAreHiddenIsNotAnnounced) {
    using LinuxPlatform::WindowEvent;
    std::vector<LinuxPlatform::WindowId> windows;
    for (const auto* const name : {"first", "second", "third"}) {
        windows.push_back(this->openFocused(name));
        ASSERT_TRUE(this->waitForEvent(WindowEvent::activated, windows.back()));
    }
    this->events.clear();
    // The one with the focus last, and each by itself, as apps are.
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        this->system().hide(std::array{*window});
    }
    EXPECT_TRUE(this->waitUntil([&] { return this->countHidden() == windows.size(); }));
    // What the session still had to say has been said once this has the focus.
    const auto last = this->openFocused("last");
    ASSERT_TRUE(this->waitForEvent(WindowEvent::activated, last));
    for (const auto window : windows) {
        EXPECT_EQ(this->countOf(WindowEvent::activated, window), 0);
    }
}

TYPED_TEST_P(WindowFocusContract, WindowThatHadTheFocusGetsItBack) {
    const auto low = this->openFocused("low");
    const auto high = this->openFocused("high");
    const auto front = this->openFocused("front");
    this->world.focus(high);
    this->world.focus(low);
    this->hide(low);
    this->hide(high);
    ASSERT_TRUE(this->waitUntil([&] { return this->world.focused() == front; }));
    this->show(high);
    this->activate({high});
    this->show(low);
    this->activate({low});
    EXPECT_TRUE(this->waitUntil([&] { return this->world.focused() == low; }));
}

TYPED_TEST_P(WindowFocusContract, TopmostOfTheWindowsThatAreHereIsActivated) {
    const auto elsewhere = this->openElsewhere("first");
    const auto lower = this->openFocused("first");
    const auto upper = this->openFocused("first");
    this->openFocused("front");
    this->activate({elsewhere, upper, lower});
    EXPECT_TRUE(this->waitUntil([&] { return this->world.focused() == upper; }));
    EXPECT_EQ(this->world.workspace(), 0);
}

TYPED_TEST_P(WindowFocusContract, WindowThatIsHiddenAgainAtOnceIsNotActivated) {
    const auto window = this->openFocused("first");
    const std::array ids{window};
    this->hide(window);
    this->system().show(ids);
    this->system().activate(ids);
    this->system().hide(ids);
    // The session takes what it is asked in order, so this comes last.
    this->openFocused("last");
    EXPECT_TRUE(this->waitUntil([&] { return this->isHidden(window); }));
}

TYPED_TEST_P(WindowFocusContract, WorkspaceIsNotLeftToActivate) {
    const auto elsewhere = this->openElsewhere("elsewhere");
    this->openFocused("front");
    this->activate({elsewhere});
    const auto last = this->openFocused("last");
    // The session takes what it is asked in order, and the turn of the main queue is over.
    this->world.makeFullscreen(last);
    EXPECT_EQ(this->world.focused(), last);
    EXPECT_EQ(this->world.workspace(), 0);
    EXPECT_EQ(this->world.workspaceOf(elsewhere), 1);
}

REGISTER_TYPED_TEST_SUITE_P(WindowFocusContract, ActivatedWindowIsAnnounced,
                            ShowingChangesNeitherFocusNorWorkspace,
                            WindowOnAnotherWorkspaceIsVisibleAndCanBeHidden, FullscreenWindowComesBackAsItWas,
                            FocusThatPassesThroughWindowsThatAreHiddenIsNotAnnounced,
                            WindowThatHadTheFocusGetsItBack, TopmostOfTheWindowsThatAreHereIsActivated,
                            WindowThatIsHiddenAgainAtOnceIsNotActivated, WorkspaceIsNotLeftToActivate);

} // namespace TestSupport
