#pragma once

#include "tests/platform/windows/WindowFocusContract.h"

#include <initializer_list>

namespace TestSupport {

/// What every window system does in a session whose windows lie above one another. On top of the contract of
/// windows with a focus a world has `stackingOrder()`, the windows of the test, bottom to top, as they are on
/// the screen, and `keepAbove(window)`, by which its user keeps it above all others.
template <class World>
struct WindowOrderContract : WindowFocusContract<World> {
    using WindowId = LinuxPlatform::WindowId;

    /// Bottom to top; the last has the focus.
    std::vector<WindowId> openFive() {
        std::vector<WindowId> windows;
        for (const auto* const name : {"first", "second", "third", "fourth", "fifth"}) {
            windows.push_back(this->openFocused(name));
        }
        EXPECT_TRUE(isOrder(windows));
        return windows;
    }

    bool isOrder(const std::vector<WindowId>& order) {
        return this->waitUntil([&] { return this->world.stackingOrder() == order; });
    }

    /// Each by itself, as apps are.
    void hideEach(std::initializer_list<WindowId> windows) {
        for (const auto window : windows) {
            this->system().hide(std::array{window});
        }
        for (const auto window : windows) {
            EXPECT_TRUE(this->waitUntil([&] { return this->isHidden(window); }));
        }
    }

    void giveBackEach(std::initializer_list<WindowId> windows) {
        for (const auto window : windows) {
            this->system().show(std::array{window});
            this->system().activate(std::array{window});
        }
    }
};

TYPED_TEST_SUITE_P(WindowOrderContract);

TYPED_TEST_P(WindowOrderContract, WindowsComeBackBetweenTheirNeighbours) {
    const auto windows = this->openFive();
    this->hideEach({windows[3], windows[1]});
    this->system().show(std::array{windows[1]});
    this->system().show(std::array{windows[3]});
    EXPECT_TRUE(this->isOrder(windows)) << testing::PrintToString(this->world.stackingOrder());
}

TYPED_TEST_P(WindowOrderContract, WindowsThatWereInFrontComeBackThere) {
    const auto windows = this->openFive();
    this->hideEach({windows[2], windows[3], windows[4]});
    ASSERT_TRUE(this->waitUntil([&] { return this->world.focused() == windows[1]; }));
    this->giveBackEach({windows[3], windows[4], windows[2]});
    EXPECT_TRUE(this->waitUntil([&] { return this->world.focused() == windows[4]; }));
    EXPECT_TRUE(this->isOrder(windows)) << testing::PrintToString(this->world.stackingOrder());
}

TYPED_TEST_P(WindowOrderContract, WindowThatWasRaisedMeanwhileStaysThere) {
    const auto windows = this->openFive();
    this->hideEach({windows[1], windows[3]});
    this->world.focus(windows[2]);
    this->system().show(std::array{windows[3], windows[1]});
    EXPECT_TRUE(this->isOrder({windows[0], windows[1], windows[3], windows[4], windows[2]}))
        << testing::PrintToString(this->world.stackingOrder());
}

TYPED_TEST_P(WindowOrderContract, WindowsThatOpenedAndClosedMeanwhileAreNoHindrance) {
    auto windows = this->openFive();
    this->hideEach({windows[1], windows[3]});
    this->world.close(windows[2]);
    windows.push_back(this->openFocused("sixth"));
    windows.erase(windows.begin() + 2);
    this->system().show(std::array{windows[2], windows[1]});
    EXPECT_TRUE(this->isOrder(windows)) << testing::PrintToString(this->world.stackingOrder());
}

TYPED_TEST_P(WindowOrderContract, WindowThatIsKeptAboveOthersStaysThere) {
    auto windows = this->openFive();
    this->world.keepAbove(windows[1]);
    std::ranges::rotate(windows.begin() + 1, windows.begin() + 2, windows.end());
    ASSERT_TRUE(this->isOrder(windows)) << testing::PrintToString(this->world.stackingOrder());
    this->hideEach({windows[4], windows[3], windows[1]});
    this->giveBackEach({windows[1], windows[3], windows[4]});
    EXPECT_TRUE(this->isOrder(windows)) << testing::PrintToString(this->world.stackingOrder());
}

REGISTER_TYPED_TEST_SUITE_P(WindowOrderContract, WindowsComeBackBetweenTheirNeighbours,
                            WindowsThatWereInFrontComeBackThere, WindowThatWasRaisedMeanwhileStaysThere,
                            WindowsThatOpenedAndClosedMeanwhileAreNoHindrance,
                            WindowThatIsKeptAboveOthersStaysThere);

} // namespace TestSupport
