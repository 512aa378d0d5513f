#pragma once

#include "platform/linux/windows/WindowSystem.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// What every window system does. A world has
/// - `system()`, whose list is empty at first,
/// - `open(name)`, which opens a window whose class is `name` and returns its identifier,
/// - `process()`, that of its windows,
/// - `close(window)`,
/// - `bringBack(window)`, by which its user brings a hidden window back,
/// - `waitUntil(condition)`, which returns whether the condition came true in time.
template <class World>
struct WindowSystemContract : testing::Test {
    using Window = LinuxPlatform::Window;
    using WindowEvent = LinuxPlatform::WindowEvent;
    using WindowId = LinuxPlatform::WindowId;

    World world;
    std::vector<std::pair<WindowEvent, WindowId>> events;
    Platform::Subscription subscription = world.system().addEventHandler(
        [this](WindowEvent event, const Window& window) { events.emplace_back(event, window.id); });

    LinuxPlatform::WindowSystem& system() { return world.system(); }

    template <class Condition>
    bool waitUntil(const Condition& condition) {
        return world.waitUntil(condition);
    }

    std::optional<Window> find(WindowId window) {
        const auto& windows = system().windows();
        const auto found = std::ranges::find(windows, window, &Window::id);
        return found == windows.end() ? std::nullopt : std::optional(*found);
    }

    bool isHidden(WindowId window) {
        const auto found = find(window);
        return found && found->isHidden;
    }

    std::size_t countHidden() {
        return static_cast<std::size_t>(std::ranges::count(system().windows(), true, &Window::isHidden));
    }

    WindowId open(const std::string& name) {
        const auto window = world.open(name);
        EXPECT_TRUE(waitUntil([&] { return find(window).has_value(); })) << name;
        return window;
    }

    void hide(WindowId window) {
        system().hide(std::array{window});
        EXPECT_TRUE(waitUntil([&] { return isHidden(window); }));
    }

    void show(WindowId window) {
        system().show(std::array{window});
        EXPECT_TRUE(waitUntil([&] { return !isHidden(window); }));
    }

    void goAtOnceAndComeBack(std::size_t count) {
        std::vector<WindowId> windows;
        while (windows.size() < count) {
            windows.push_back(world.open("many"));
        }
        ASSERT_EQ(countOnceItIs(count, [this] { return system().windows().size(); }), count);
        system().hide(windows);
        EXPECT_EQ(countOnceItIs(count, [this] { return countHidden(); }), count);
        system().show(windows);
        EXPECT_EQ(countOnceItIs(0, [this] { return countHidden(); }), 0U);
    }

    /// However long so many windows take: the last count where it stands still before.
    template <class Count>
    std::size_t countOnceItIs(std::size_t expected, const Count& count) {
        auto last = count();
        while (last != expected && waitUntil([&] { return count() != last; })) {
            last = count();
        }
        return last;
    }

    std::ptrdiff_t countOf(WindowEvent event, WindowId window) {
        return std::ranges::count(events, std::pair(event, window));
    }

    bool waitForEvent(WindowEvent event, WindowId window) {
        return waitUntil([&] { return countOf(event, window) > 0; });
    }

    std::vector<WindowId> listed() {
        std::vector<WindowId> ids;
        for (const auto& window : system().windows()) {
            ids.push_back(window.id);
        }
        return ids;
    }
};

TYPED_TEST_SUITE_P(WindowSystemContract);

TYPED_TEST_P(WindowSystemContract, CanHideAndKnowsEveryWindow) {
    EXPECT_TRUE(this->waitUntil([&] { return !this->system().hidingObstacle(); }));
    EXPECT_TRUE(this->waitUntil([&] { return this->system().knowsEveryWindow(); }));
}

TYPED_TEST_P(WindowSystemContract, WindowIsListedWithItsAppAndProcess) {
    const auto window = this->open("first");
    // What the X server knows of it may come later.
    EXPECT_TRUE(this->waitUntil([&] {
        const auto found = this->find(window);
        return found && found->hints.process == this->world.process();
    }));
    const auto found = this->find(window);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->hints.className, "first");
    EXPECT_EQ(found->hints.process, this->world.process());
    EXPECT_FALSE(found->isHidden);
    EXPECT_TRUE(found->isInTaskList);
    EXPECT_TRUE(this->system().exists(window));
}

TYPED_TEST_P(WindowSystemContract, OpenedAndClosedWindowsAreFollowed) {
    const auto before = this->system().generation();
    const auto window = this->open("first");
    const auto opened = this->system().generation();
    EXPECT_NE(opened, before);
    EXPECT_TRUE(this->waitForEvent(LinuxPlatform::WindowEvent::opened, window));
    this->world.close(window);
    EXPECT_TRUE(this->waitUntil([&] { return !this->find(window); }));
    EXPECT_NE(this->system().generation(), opened);
    EXPECT_FALSE(this->system().exists(window));
    EXPECT_EQ(this->countOf(LinuxPlatform::WindowEvent::opened, window), 1);
}

TYPED_TEST_P(WindowSystemContract, EndedSubscriptionIsNotTold) {
    this->subscription = {};
    int others = 0;
    const auto other = this->system().addEventHandler([&](auto, const auto&) { ++others; });
    this->open("first");
    ASSERT_TRUE(this->waitUntil([&] { return others > 0; }));
    EXPECT_THAT(this->events, testing::IsEmpty());
}

TYPED_TEST_P(WindowSystemContract, ListKeepsItsOrder) {
    const std::vector order{this->open("first"), this->open("second"), this->open("third")};
    EXPECT_EQ(this->listed(), order);
    this->hide(order[0]);
    this->hide(order[2]);
    this->show(order[0]);
    EXPECT_EQ(this->listed(), order);
}

TYPED_TEST_P(WindowSystemContract, HiddenWindowStaysInTheListAndOthersStayInView) {
    const auto first = this->open("first");
    const auto second = this->open("first");
    const auto generation = this->system().generation();
    this->hide(first);
    EXPECT_NE(this->system().generation(), generation);
    EXPECT_TRUE(this->system().exists(first));
    EXPECT_FALSE(this->isHidden(second));
    this->hide(second);
    this->show(first);
    EXPECT_TRUE(this->isHidden(second));
}

TYPED_TEST_P(WindowSystemContract, HidingAndShowingTwiceIsAsGoodAsOnce) {
    const auto window = this->open("first");
    const auto other = this->open("other");
    this->hide(window);
    this->hide(window);
    // The session answers in order.
    this->hide(other);
    EXPECT_TRUE(this->isHidden(window));
    this->show(window);
    this->show(window);
    this->show(other);
    EXPECT_FALSE(this->isHidden(window));
}

TYPED_TEST_P(WindowSystemContract, WindowThatIsHiddenAndShownAtOnceIsShown) {
    const auto window = this->open("first");
    const auto other = this->open("other");
    const std::array ids{window};
    this->system().hide(ids);
    this->system().show(ids);
    this->hide(other);
    EXPECT_TRUE(this->waitUntil([&] { return !this->isHidden(window); }));
    this->system().hide(ids);
    this->system().show(ids);
    this->system().hide(ids);
    this->show(other);
    EXPECT_TRUE(this->waitUntil([&] { return this->isHidden(window); }));
}

TYPED_TEST_P(WindowSystemContract, WindowThatItsUserBringsBackIsAnnounced) {
    const auto window = this->open("first");
    this->open("other");
    this->hide(window);
    this->events.clear();
    this->world.bringBack(window);
    EXPECT_TRUE(this->waitUntil([&] { return !this->isHidden(window); }));
    EXPECT_TRUE(this->waitForEvent(LinuxPlatform::WindowEvent::activated, window));
    this->hide(window);
}

TYPED_TEST_P(WindowSystemContract, RequestsAboutWindowsThatAreGoneAreHarmless) {
    const auto window = this->open("first");
    this->world.close(window);
    ASSERT_TRUE(this->waitUntil([&] { return !this->find(window); }));
    const std::array<LinuxPlatform::WindowId, 3> gone{window, 0, 0xFFFFFFFF};
    this->system().hide(gone);
    this->system().show(gone);
    this->system().activate(gone);
    this->system().hide({});
    this->system().show({});
    this->system().activate({});
    const auto other = this->open("other");
    this->hide(other);
    EXPECT_THAT(this->listed(), testing::ElementsAre(other));
}

TYPED_TEST_P(WindowSystemContract, FiftyWindowsGoAtOnceAndComeBack) {
    this->goAtOnceAndComeBack(50);
}

TYPED_TEST_P(WindowSystemContract, FiveHundredWindowsGoAtOnceAndComeBack) {
    this->goAtOnceAndComeBack(500);
}

REGISTER_TYPED_TEST_SUITE_P(WindowSystemContract, CanHideAndKnowsEveryWindow,
                            WindowIsListedWithItsAppAndProcess, OpenedAndClosedWindowsAreFollowed,
                            EndedSubscriptionIsNotTold, ListKeepsItsOrder,
                            HiddenWindowStaysInTheListAndOthersStayInView,
                            HidingAndShowingTwiceIsAsGoodAsOnce, WindowThatIsHiddenAndShownAtOnceIsShown,
                            WindowThatItsUserBringsBackIsAnnounced,
                            RequestsAboutWindowsThatAreGoneAreHarmless, FiftyWindowsGoAtOnceAndComeBack,
                            FiveHundredWindowsGoAtOnceAndComeBack);

} // namespace TestSupport
