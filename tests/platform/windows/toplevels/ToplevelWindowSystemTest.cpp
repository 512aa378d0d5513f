#include "platform/linux/windows/toplevels/ToplevelWindowSystem.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/platform/i3/ScriptedI3.h"
#include "tests/platform/windows/WindowSystemContract.h"
#include "tests/platform/windows/toplevels/ScriptedCompositor.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {
namespace {

using LinuxPlatform::ToplevelWindowSystem;
using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowId;
using Platform::HidingObstacle;
using PlatformTests::ScriptedCompositor;
using Minimising = ToplevelWindowSystem::Minimising;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

/// What has to be answered is answered, however busy the machine is.
constexpr LinuxPlatform::ForeignToplevels::Patience longPatience{std::chrono::seconds(20),
                                                                 std::chrono::seconds(20)};

constexpr LinuxPlatform::ForeignToplevels::Patience noPatience{std::chrono::milliseconds(0),
                                                               std::chrono::milliseconds(0)};

class ToplevelContractWorld {
public:
    ToplevelWindowSystem& system() { return system_; }
    WindowId open(const std::string& name) {
        const auto window = compositor_.open(name);
        EXPECT_TRUE(waitUntil([&] { return system_.exists(window); }));
        return window;
    }
    /// The protocol does not tell.
    static std::optional<std::uint32_t> process() { return std::nullopt; }
    void close(WindowId window) { compositor_.close(window); }
    void bringBack(WindowId window) { compositor_.focus(window); }

    template <class Condition>
    static bool waitUntil(const Condition& condition) {
        return spinUntil(condition);
    }

private:
    ScriptedCompositor compositor_;
    QtPlatform::QtMainQueue queue_;
    ToplevelWindowSystem system_{compositor_.path(), queue_, Minimising::known, longPatience};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Toplevels, WindowSystemContract, ToplevelContractWorld);

struct ToplevelWindowSystemTest : testing::Test {
    ScriptedCompositor compositor;
    HandDrivenQueue queue;
    std::unique_ptr<ToplevelWindowSystem> system;
    std::vector<std::pair<WindowEvent, WindowId>> events;
    Platform::Subscription subscription;

    void start(Minimising minimising = Minimising::known,
               LinuxPlatform::ForeignToplevels::Patience patience = longPatience) {
        system = std::make_unique<ToplevelWindowSystem>(compositor.path(), queue, minimising, patience);
        subscription = system->addEventHandler(
            [this](WindowEvent event, const Window& window) { events.emplace_back(event, window.id); });
    }

    /// No time passes meanwhile.
    template <class Condition>
    bool comesTo(const Condition& condition) {
        return spinUntil([&] {
            queue.runReady();
            return condition();
        });
    }

    WindowId open(const std::string& applicationId) {
        const auto window = compositor.open(applicationId);
        EXPECT_TRUE(comesTo([&] { return system->exists(window); }));
        return window;
    }

    /// What the compositor has said until now has been heard.
    void hearAll() {
        const auto last = open("last");
        EXPECT_TRUE(comesTo([&] {
            return std::ranges::find(events, std::pair(WindowEvent::activated, last)) != events.end();
        }));
        compositor.close(last);
        EXPECT_TRUE(comesTo([&] { return !system->exists(last); }));
    }

    /// By its user, and heard.
    void focus(WindowId window) {
        events.clear();
        compositor.focus(window);
        EXPECT_TRUE(comesTo([&] {
            return std::ranges::find(events, std::pair(WindowEvent::activated, window)) != events.end();
        }));
    }

    std::optional<Window> find(WindowId window) {
        const auto& windows = system->windows();
        const auto found = std::ranges::find(windows, window, &Window::id);
        return found == windows.end() ? std::nullopt : std::optional(*found);
    }

    bool isHidden(WindowId window) {
        const auto found = find(window);
        return found && found->isHidden;
    }

    void hide(WindowId window) {
        system->hide(std::array{window});
        EXPECT_TRUE(comesTo([&] { return isHidden(window); }));
    }

    /// A window that its user turns to, before the others are hidden.
    WindowId hideBehindFront(std::initializer_list<WindowId> windows) {
        const auto front = open("front");
        hearAll();
        focus(front);
        for (const auto window : windows) {
            hide(window);
        }
        return front;
    }

    void show(WindowId window) {
        system->show(std::array{window});
        EXPECT_TRUE(comesTo([&] { return !isHidden(window); }));
    }

    /// The compositor has taken what it was asked, and a second and more has passed since.
    void waitInVain(std::size_t requests) {
        EXPECT_TRUE(comesTo([&] { return compositor.asked().size() == requests; }));
        hearAll();
        queue.advance(1.1);
    }
};

TEST_F(ToplevelWindowSystemTest, WhatIsThereAtTheStartIsKnownAtOnceAndNotNew) {
    const auto first = compositor.open("first");
    const auto second = compositor.open("second");
    start();
    EXPECT_TRUE(system->knowsEveryWindow());
    EXPECT_EQ(system->hidingObstacle(), std::nullopt);
    queue.runReady();
    EXPECT_THAT(events,
                ElementsAre(Pair(WindowEvent::activated, first), Pair(WindowEvent::activated, second)));
}

TEST_F(ToplevelWindowSystemTest, AppsAreKnownByTheirIdentifierAndCountAsOneProcess) {
    start();
    const auto first = find(open("org.example.App"));
    const auto second = find(open("org.example.App"));
    const auto other = find(open("xterm"));
    ASSERT_TRUE(first && second && other);
    EXPECT_EQ(first->hints.applicationId, "org.example.App");
    EXPECT_EQ(first->hints.className, "org.example.App");
    EXPECT_EQ(first->hints.instanceName, "org.example.App");
    EXPECT_EQ(first->hints.process, std::nullopt);
    EXPECT_EQ(first->client, second->client);
    EXPECT_NE(first->client, other->client);
}

TEST_F(ToplevelWindowSystemTest, AWindowThatBecomesAnotherAppsIsOpenedAgain) {
    start();
    const auto window = open("first");
    hearAll();
    events.clear();
    compositor.repeat(window);
    hearAll();
    EXPECT_THAT(events, Not(Contains(Pair(testing::_, window)))) << "nothing was new";
    compositor.rename(window, "second");
    EXPECT_TRUE(comesTo([&] { return find(window)->hints.className == "second"; }));
    queue.runReady();
    EXPECT_THAT(events, Contains(Pair(WindowEvent::opened, window)));
}

TEST_F(ToplevelWindowSystemTest, HostileIdentifiersAreTakenAsTheyAre) {
    start();
    const std::string control = "\x01\x1b[2J\n<b>\xff\xfe";
    const std::string large(3'900, 'x');
    EXPECT_EQ(find(open(control))->hints.applicationId, control);
    EXPECT_EQ(find(open(large))->hints.applicationId, large);
    EXPECT_EQ(find(open(""))->hints.applicationId, "");
    EXPECT_EQ(system->hidingObstacle(), std::nullopt);
}

TEST_F(ToplevelWindowSystemTest, FocusIsAnnouncedWhenItComesAndNotWhenItIsToldOfAgain) {
    start();
    const auto first = open("first");
    const auto second = open("second");
    hearAll();
    events.clear();
    compositor.focus(first);
    compositor.repeat(first);
    hearAll();
    EXPECT_EQ(std::ranges::count(events, std::pair(WindowEvent::activated, first)), 1);
    EXPECT_EQ(std::ranges::count(events, std::pair(WindowEvent::activated, second)), 0);
}

TEST_F(ToplevelWindowSystemTest, FocusThatPassesThroughWindowsThatAreHiddenIsNotAnnounced) {
    start();
    const std::array windows{open("first"), open("second"), open("third")};
    events.clear();
    // The one with the focus first, and each by itself, as apps are.
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        system->hide(std::array{*window});
    }
    EXPECT_TRUE(comesTo([&] { return std::ranges::all_of(windows, [&](auto id) { return isHidden(id); }); }));
    hearAll();
    for (const auto window : windows) {
        EXPECT_THAT(events, Not(Contains(Pair(WindowEvent::activated, window))));
    }
}

TEST_F(ToplevelWindowSystemTest, TheWindowThatHadTheFocusGetsItBackAndNoOther) {
    start();
    const std::array windows{open("first"), open("second")};
    const auto front = open("front");
    hearAll();
    events.clear();
    compositor.focus(windows[0]);
    EXPECT_TRUE(comesTo([&] { return !events.empty(); }));
    hide(windows[0]);
    hide(windows[1]);
    for (const auto window : windows) {
        show(window);
        system->activate(std::array{window});
        queue.runReady();
    }
    EXPECT_TRUE(comesTo([&] { return compositor.focused() == windows[0] && !isHidden(windows[1]); }));
    hearAll();
    EXPECT_THAT(compositor.asked().back(), "activate " + std::to_string(windows[0]));
    EXPECT_THAT(compositor.asked(), Not(Contains("activate " + std::to_string(windows[1]))))
        << "it may be on another workspace";
    EXPECT_FALSE(isHidden(front));
}

TEST_F(ToplevelWindowSystemTest, ShowingDoesNotChangeTheFocusThoughTheCompositorDoes) {
    start();
    const std::array windows{open("first"), open("second"), open("third")};
    const auto front = open("front");
    for (const auto window : windows) {
        hide(window);
    }
    system->show(std::array{windows[0], windows[1]});
    EXPECT_TRUE(comesTo([&] { return !isHidden(windows[1]); }));
    system->show(std::array{windows[2]});
    EXPECT_TRUE(comesTo([&] { return !isHidden(windows[2]); }));
    EXPECT_TRUE(comesTo([&] { return compositor.focused() == front; }));
    // What its user turns to afterwards is the front.
    hearAll();
    events.clear();
    compositor.focus(windows[0]);
    EXPECT_TRUE(comesTo([&] { return !events.empty(); }));
    queue.advance(1);
    hide(windows[1]);
    show(windows[1]);
    EXPECT_TRUE(comesTo([&] { return compositor.focused() == windows[0]; }));
}

TEST_F(ToplevelWindowSystemTest, AnAppThatComesBackByItselfIsNotShownBehindWhatCoversIt) {
    start();
    const auto window = open("private");
    const auto front = hideBehindFront({window});
    system->show(std::array{window});
    system->activate(std::array{window});
    EXPECT_TRUE(comesTo([&] { return !isHidden(window); }));
    hearAll();
    EXPECT_THAT(compositor.asked(), Not(Contains("activate " + std::to_string(front))));
}

TEST_F(ToplevelWindowSystemTest, TheFrontStaysWhenSeveralAppsComeBack) {
    start();
    const std::array windows{open("first"), open("second")};
    const auto front = hideBehindFront({windows[0], windows[1]});
    for (const auto window : windows) {
        system->show(std::array{window});
        system->activate(std::array{window});
    }
    EXPECT_TRUE(comesTo([&] { return !isHidden(windows[1]) && compositor.focused() == front; }));
}

TEST_F(ToplevelWindowSystemTest, TheFrontStaysWhenTheProgramEndsWithTheGivingBack) {
    start();
    const auto window = open("private");
    const auto front = hideBehindFront({window});
    system->show(std::array{window});
    system.reset();
    EXPECT_FALSE(compositor.isMinimised(window));
    EXPECT_EQ(compositor.focused(), front);
}

TEST_F(ToplevelWindowSystemTest, WhatIsActivatedIsRestoredBefore) {
    compositor.setActivatingRestores(false);
    start();
    const std::array windows{open("first"), open("second")};
    hearAll();
    focus(windows[1]);
    hide(windows[1]);
    hide(windows[0]);
    for (const auto window : windows) {
        system->show(std::array{window});
        system->activate(std::array{window});
    }
    // Before the first of the requests is answered.
    queue.runReady();
    EXPECT_TRUE(comesTo([&] { return !isHidden(windows[0]) && !isHidden(windows[1]); }))
        << testing::PrintToString(compositor.asked());
    EXPECT_TRUE(comesTo([&] { return compositor.focused() == windows[1]; })) << "it had the focus";
}

TEST_F(ToplevelWindowSystemTest, WhatIsOnItsWayOutIsNotTheFrontThatStays) {
    for (const double delay : {0.0, 2.0}) {
        start();
        const std::array others{open("first"), open("second")};
        const auto leaving = open("leaving");
        for (const auto window : others) {
            hide(window);
        }
        queue.advance(2);
        compositor.freeze();
        // The first of them is on its way, the others wait.
        system->hide(std::array{others[0]});
        system->hide(std::array{leaving});
        queue.advance(delay);
        system->show(others);
        queue.runReady();
        compositor.thaw();
        EXPECT_TRUE(comesTo([&] { return isHidden(leaving) && !isHidden(others[1]); }));
        hearAll();
        EXPECT_TRUE(isHidden(leaving));
        EXPECT_THAT(compositor.asked(), Not(Contains("activate " + std::to_string(leaving))));
        system.reset();
        compositor.startAnew();
        events.clear();
    }
}

TEST_F(ToplevelWindowSystemTest, OnlyWhatIsAskedLastOfAWindowReachesABusyCompositor) {
    start();
    const std::array windows{open("first"), open("second")};
    compositor.freeze();
    system->hide(std::array{windows[0]});
    for (int time = 0; time < 1'000; ++time) {
        system->hide(windows);
        system->show(windows);
    }
    system->hide(std::array{windows[1]});
    compositor.thaw();
    EXPECT_TRUE(comesTo([&] { return isHidden(windows[1]); }));
    EXPECT_FALSE(isHidden(windows[0]));
    EXPECT_THAT(compositor.asked(), ElementsAre("minimise 1", "restore 1", "minimise 2"));
}

TEST_F(ToplevelWindowSystemTest, AWindowIsAwaitedUntilTheCompositorHasTakenThatItIsToBeShown) {
    start();
    const std::array windows{open("first"), open("second")};
    compositor.freeze();
    system->hide(std::array{windows[0]});
    system->show(windows);
    EXPECT_TRUE(system->isShowAwaited(windows[0])) << "waits behind what was sent";
    EXPECT_TRUE(system->isShowAwaited(windows[1]));
    system->hide(std::array{windows[1]});
    EXPECT_FALSE(system->isShowAwaited(windows[1]));
    compositor.thaw();
    EXPECT_TRUE(comesTo([&] { return isHidden(windows[1]); }));
    EXPECT_TRUE(comesTo([&] { return !system->isShowAwaited(windows[0]); }));
}

TEST_F(ToplevelWindowSystemTest, WhatIsAskedAtTheVeryEndHappens) {
    start();
    std::vector<WindowId> windows;
    while (windows.size() < 200) {
        windows.push_back(open("many"));
    }
    system->hide(windows);
    EXPECT_TRUE(comesTo([&] { return std::ranges::all_of(windows, [&](auto id) { return isHidden(id); }); }));
    system->show(windows);
    system.reset();
    for (const auto window : windows) {
        ASSERT_FALSE(compositor.isMinimised(window)) << window;
    }
}

// A compositor that minimises nothing

TEST_F(ToplevelWindowSystemTest, ACompositorThatDoesNotHideIsAskedTwiceAndFoundOut) {
    compositor.setHeedsHiding(false);
    start();
    const auto window = open("first");
    EXPECT_EQ(system->hidingObstacle(), std::nullopt) << "nobody has asked it for anything yet";
    system->hide(std::array{window});
    waitInVain(1);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    waitInVain(2);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::windowManagerIgnoresHiding);
    EXPECT_FALSE(isHidden(window));
    EXPECT_TRUE(system->knowsEveryWindow());
    EXPECT_THAT(compositor.asked(), ElementsAre("minimise 1", "minimise 1"));
    compositor.setHeedsHiding(true);
    hide(window);
    EXPECT_EQ(system->hidingObstacle(), std::nullopt) << "it has learnt it";
}

TEST_F(ToplevelWindowSystemTest, ACompositorThatNobodyKnowsIsTrustedOnceItHasHiddenAWindow) {
    start(Minimising::untried);
    const auto window = open("first");
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::waylandSession);
    EXPECT_TRUE(system->knowsEveryWindow()) << "or nobody would try";
    hide(window);
    EXPECT_EQ(system->hidingObstacle(), std::nullopt);
    show(window);
    EXPECT_EQ(system->hidingObstacle(), std::nullopt);
    compositor.startAnew();
    EXPECT_TRUE(comesTo([&] { return !system->knowsEveryWindow(); }));
    queue.advance(0.1);
    EXPECT_TRUE(comesTo([&] { return system->knowsEveryWindow(); }));
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::waylandSession) << "it may be another one";
}

TEST_F(ToplevelWindowSystemTest, ACompositorThatNobodyKnowsIsNotTrustedWhileItIsTried) {
    compositor.setHeedsHiding(false);
    start(Minimising::untried);
    system->hide(std::array{open("first")});
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::waylandSession);
    waitInVain(1);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::waylandSession);
    waitInVain(2);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::windowManagerIgnoresHiding);
}

TEST_F(ToplevelWindowSystemTest, ARepeatedRequestIsGivenItsTimeWhateverIsAskedMeanwhile) {
    compositor.setHeedsHiding(false);
    start();
    const auto other = open("other");
    const auto window = open("first");
    system->hide(std::array{window});
    EXPECT_TRUE(comesTo([&] { return compositor.asked().size() == 1; }));
    hearAll();
    queue.advance(0.5);
    system->show(std::array{other});
    EXPECT_TRUE(comesTo([&] { return compositor.asked().size() == 2; }));
    hearAll();
    queue.advance(0.6);
    EXPECT_TRUE(comesTo([&] { return compositor.asked().size() == 3; })) << "it is asked once more";
    hearAll();
    queue.advance(0.5);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    queue.advance(0.6);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::windowManagerIgnoresHiding);
}

TEST_F(ToplevelWindowSystemTest, AWindowThatWasHiddenAlreadyProvesNothing) {
    start();
    const auto window = open("first");
    const auto other = open("other");
    hide(window);
    compositor.startAnew();
    EXPECT_TRUE(comesTo([&] { return system->windows().empty(); }));
    compositor.open("first");
    EXPECT_TRUE(comesTo([&] {
        queue.advance(0.1);
        return system->knowsEveryWindow() && system->windows().size() == 1;
    }));
    compositor.setHeedsHiding(false);
    system->hide(std::array{system->windows().front().id, window, other});
    EXPECT_TRUE(comesTo([&] {
        queue.advance(0.5);
        return system->hidingObstacle() == HidingObstacle::windowManagerIgnoresHiding;
    })) << "another compositor is tried anew";
}

TEST_F(ToplevelWindowSystemTest, ABusyCompositorIsNotBlamed) {
    start();
    const auto window = open("first");
    compositor.freeze();
    system->hide(std::array{window});
    queue.advance(1.1);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    queue.advance(60);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    compositor.thaw();
    EXPECT_TRUE(comesTo([&] { return isHidden(window); }));
    EXPECT_EQ(system->hidingObstacle(), std::nullopt);
}

// A compositor that cannot be asked

TEST(ToplevelWindowSystemWithoutProtocol, SaysThatNothingCanBeHidden) {
    ScriptedCompositor compositor(ScriptedCompositor::Protocol::notOffered);
    HandDrivenQueue queue;
    ToplevelWindowSystem system(compositor.path(), queue, Minimising::known, longPatience);
    EXPECT_TRUE(spinUntil([&] { return system.hidingObstacle() == HidingObstacle::waylandSession; }));
    EXPECT_FALSE(system.knowsEveryWindow());
}

TEST(ToplevelWindowSystemWithoutCompositor, SaysSoInTime) {
    const TemporaryFolder folder;
    HandDrivenQueue queue;
    ToplevelWindowSystem system(folder.path() / "nobody", queue, Minimising::known);
    EXPECT_EQ(system.hidingObstacle(), HidingObstacle::notKnownYet);
    queue.advance(5.1);
    EXPECT_EQ(system.hidingObstacle(), HidingObstacle::waylandSession);
    EXPECT_FALSE(system.knowsEveryWindow());
    EXPECT_THAT(system.windows(), IsEmpty());
}

TEST(ToplevelWindowSystemWithStrangers, NothingIsKnownFromNoise) {
    PlatformTests::ScriptedI3 stranger;
    HandDrivenQueue queue;
    ToplevelWindowSystem system(stranger.path(), queue, Minimising::known, noPatience);
    for (const auto& noise : {QByteArray(100, '\xff'), QByteArray("\x01\0\0\0\0\0\x40", 7),
                              QByteArray(64, '\0'), QByteArray("HTTP/1.1 400 Bad Request\r\n\r\n")}) {
        ASSERT_TRUE(stranger.accept());
        stranger.say(noise);
        stranger.hangUp();
        EXPECT_TRUE(spinUntil([&] {
            queue.advance(0.1);
            return stranger.hasClient();
        })) << "it is tried once more";
        EXPECT_NE(system.hidingObstacle(), std::nullopt);
        EXPECT_FALSE(system.knowsEveryWindow());
    }
}

TEST_F(ToplevelWindowSystemTest, ACompositorThatRestartsIsListedAnew) {
    start();
    const auto window = open("first");
    hide(window);
    compositor.freeze();
    system->show(std::array{window});
    compositor.thaw();
    compositor.startAnew();
    EXPECT_TRUE(comesTo([&] { return !system->knowsEveryWindow(); }));
    EXPECT_THAT(system->windows(), IsEmpty());
    EXPECT_FALSE(system->exists(window));
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    queue.advance(0.1);
    EXPECT_TRUE(comesTo([&] { return system->knowsEveryWindow(); }));
    EXPECT_EQ(system->hidingObstacle(), std::nullopt);
    compositor.open("second");
    EXPECT_TRUE(comesTo([&] { return system->windows().size() == 1; }));
    const auto second = system->windows().front().id;
    EXPECT_NE(second, window) << "an identifier is given out once";
    hide(second);
}

TEST_F(ToplevelWindowSystemTest, ACompositorThatRefusesIsTriedEverLessOften) {
    start();
    const auto lostAt = queue.now();
    compositor.setRefuses(true);
    double lastPause = 0;
    for (int attempt = 0; attempt < 12; ++attempt) {
        // It was heard, and waits for the next attempt.
        ASSERT_TRUE(spinUntil([&] { return queue.waiting() > 0; }));
        const auto heardAt = queue.now();
        EXPECT_FALSE(system->knowsEveryWindow());
        EXPECT_EQ(system->hidingObstacle(), (heardAt - lostAt).count() < 5 ? HidingObstacle::notKnownYet
                                                                           : HidingObstacle::waylandSession);
        const auto connections = compositor.connections();
        while (queue.waiting() > 0) {
            queue.advance(0.025);
        }
        const auto pause = (queue.now() - heardAt).count();
        EXPECT_GE(pause, std::min(lastPause * 1.5, 4.9));
        lastPause = pause;
        ASSERT_TRUE(spinUntil([&] { return compositor.connections() == connections + 1; }));
    }
    EXPECT_GE(lastPause, 4.9);
    EXPECT_LE(lastPause, 5.1);
    compositor.setRefuses(false);
    EXPECT_TRUE(comesTo([&] {
        queue.advance(1);
        return system->knowsEveryWindow();
    }));
}

TEST_F(ToplevelWindowSystemTest, ThatTheListIsWholeIsAChangeOfIt) {
    compositor.freeze();
    start(Minimising::known, noPatience);
    const auto before = system->generation();
    EXPECT_FALSE(system->knowsEveryWindow());
    compositor.thaw();
    EXPECT_TRUE(comesTo([&] { return system->knowsEveryWindow(); }));
    EXPECT_NE(system->generation(), before);
}

TEST_F(ToplevelWindowSystemTest, ACompositorThatHasNothingMoreToSayIsNotTrusted) {
    start();
    open("first");
    compositor.finish();
    EXPECT_TRUE(comesTo([&] { return !system->knowsEveryWindow(); }));
    EXPECT_THAT(system->windows(), IsEmpty());
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::waylandSession);
}

} // namespace
} // namespace TestSupport
