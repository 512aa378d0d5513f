#include "platform/linux/ownwindows/X11WindowManagerClient.h"
#include "tests/platform/ownwindows/ScriptedWindowManager.h"
#include "tests/platform/windows/x11/X11WindowFixture.h"
#include "tests/platform/workspace/PrivacyMode.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <csignal>

namespace {

using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowId;
using LinuxPlatform::X11Connection;
using LinuxPlatform::X11WindowSystem;
using PlatformTests::PrivacyMode;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using TestSupport::ChildProcess;
using TestSupport::ScriptedWindowManager;
using TestSupport::spinUntil;
using TestSupport::X11TestClient;

constexpr auto hiddenState = "_NET_WM_STATE_HIDDEN";
constexpr auto aboveState = "_NET_WM_STATE_ABOVE";
constexpr auto focusedState = "_NET_WM_STATE_FOCUSED";
constexpr auto shadedState = "_NET_WM_STATE_SHADED";
constexpr auto ignoresHiding = Platform::HidingObstacle::windowManagerIgnoresHiding;
constexpr auto notKnownYet = Platform::HidingObstacle::notKnownYet;

/// A display without a window manager; the tests bring their own.
struct X11WindowManagerTest : PlatformTests::X11WindowFixture {
    ~X11WindowManagerTest() override {
        const X11TestClient cleaner;
        for (const auto* const name : {"_NET_CLIENT_LIST", "_NET_CLIENT_LIST_STACKING",
                                       "_NET_SUPPORTING_WM_CHECK", "_NET_ACTIVE_WINDOW", "_NET_SUPPORTED"}) {
            xcb_delete_property(cleaner.get(), cleaner.root(), cleaner.atom(name));
        }
        cleaner.sync();
    }

    bool isListed(xcb_window_t window) { return find(window).has_value(); }

    bool isOnScreen(xcb_window_t window) const {
        const LinuxPlatform::XcbPointer<xcb_get_window_attributes_reply_t> reply(
            xcb_get_window_attributes_reply(client.get(), xcb_get_window_attributes(client.get(), window),
                                            nullptr));
        return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    /// Another look at the windows, whose time the test moves.
    struct ManualSystem {
        TestSupport::HandDrivenQueue queue;
        std::unique_ptr<X11Connection> connection = X11Connection::open();
        X11WindowSystem system{*connection, queue};
        std::vector<std::pair<WindowEvent, WindowId>> events;
        Platform::Subscription subscription = system.addEventHandler(
            [this](WindowEvent event, const Window& window) { events.emplace_back(event, window.id); });

        bool lists(xcb_window_t window) {
            return spinUntil([&] {
                return std::ranges::find(system.windows(), WindowId{window}, &Window::id) !=
                       system.windows().end();
            });
        }

        void hideOnceListed(xcb_window_t window) {
            ASSERT_TRUE(lists(window));
            system.hide(std::array{WindowId{window}});
        }

        void advance(double seconds) {
            static_cast<void>(system.windows());
            queue.advance(seconds);
        }
    };

    /// A window that its manager lists, but has not written the state of.
    xcb_window_t openListedOnly(ScriptedWindowManager& manager) {
        const auto window = client.open("a", "A");
        manager.list({window});
        return window;
    }

    /// Asks so often in vain to hide a window, then to show and to activate it, and counts the requests to
    /// activate it that came within so many seconds.
    std::size_t activationsAfterHidingInVain(xcb_window_t window, int times, double seconds) {
        listenAsManager();
        ManualSystem manual;
        EXPECT_TRUE(manual.lists(window));
        const std::array ids{WindowId{window}};
        for (int count = 0; count < times; ++count) {
            manual.system.hide(ids);
            manual.advance(1.1);
        }
        manual.system.show(ids);
        manual.system.activate(ids);
        manual.advance(seconds);
        return requests(manual).activate.size();
    }

    /// Since the last time.
    int requestsToHide(ManualSystem& manual) {
        // Whatever was sent before this answer has arrived.
        manual.connection->atoms(std::array{std::string_view("WM_CHANGE_STATE")});
        client.sync();
        int count = 0;
        while (const LinuxPlatform::XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(client.get())}) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            if ((event->response_type & 0x7FU) == XCB_CLIENT_MESSAGE &&
                message.type == client.atom("WM_CHANGE_STATE")) {
                ++count;
            }
        }
        return count;
    }

    /// As a manager gets requests.
    void listenAsManager() {
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
        xcb_change_window_attributes(client.get(), client.root(), XCB_CW_EVENT_MASK, &mask);
        client.sync();
    }

    /// A hidden window of a manager that answers questions, here when the test does.
    xcb_window_t hideUnderOneThatAnswers(ScriptedWindowManager& manager) {
        manager.support({"_NET_CLIENT_LIST", "_NET_REQUEST_FRAME_EXTENTS"});
        const auto window = openUnder(manager, ScriptedWindowManager::iconic, {hiddenState});
        listenAsManager();
        return window;
    }

    struct Requests {
        std::vector<xcb_window_t> map;
        std::vector<xcb_client_message_event_t> activate;
        /// The changes of states that were asked for after the first of those.
        std::vector<xcb_client_message_event_t> statesThen;
        /// Those about which the extents of a frame were asked.
        std::vector<xcb_window_t> asked;
    };

    /// Since the last time.
    Requests requests(ManualSystem& manual) {
        // Whatever was sent before this answer has arrived.
        manual.connection->atoms(std::array{std::string_view("_NET_ACTIVE_WINDOW")});
        client.sync();
        Requests found;
        while (const LinuxPlatform::XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(client.get())}) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            switch (event->response_type & 0x7FU) {
            case XCB_MAP_REQUEST:
                found.map.push_back(reinterpret_cast<const xcb_map_request_event_t&>(*event).window);
                break;
            case XCB_CLIENT_MESSAGE:
                if (message.type == client.atom("_NET_ACTIVE_WINDOW")) {
                    found.activate.push_back(message);
                } else if (message.type == client.atom("_NET_REQUEST_FRAME_EXTENTS")) {
                    found.asked.push_back(message.window);
                } else if (message.type == client.atom("_NET_WM_STATE") && !found.activate.empty()) {
                    found.statesThen.push_back(message);
                }
                break;
            default:
                break;
            }
        }
        return found;
    }

    /// A window as a manager has it that leaves hidden windows mapped.
    xcb_window_t openUnder(ScriptedWindowManager& manager, std::uint32_t managerState,
                           std::initializer_list<std::string_view> states = {}) {
        const auto window = client.open("a", "A");
        manager.setManagerState(window, managerState);
        manager.setStates(window, states);
        manager.list({window});
        return window;
    }

    /// Another one, of an app of its own.
    xcb_window_t openBeside(ScriptedWindowManager& manager, xcb_window_t first) {
        const auto window = client.open("b", "B");
        manager.setManagerState(window, ScriptedWindowManager::normal);
        manager.list({first, window});
        return window;
    }
};

TEST_F(X11WindowManagerTest, WithoutAManagerThereAreNoWindowsAndNothingHangs) {
    const auto window = client.open("a", "A");
    PrivacyMode privacy(system, mainQueue);
    EXPECT_THAT(system.windows(), IsEmpty());
    EXPECT_EQ(system.hidingObstacle(), Platform::HidingObstacle::noWindowManager);
    EXPECT_FALSE(system.knowsEveryWindow());
    EXPECT_EQ(privacy.hiding.isHidden("a"), std::nullopt);
    system.hide(std::array{WindowId{window}});
    system.show(std::array{WindowId{window}});
    system.activate(std::array{WindowId{window}});
    privacy.engine.activate({"a"});
    privacy.engine.deactivate();
    EXPECT_THAT(system.windows(), IsEmpty());
    EXPECT_TRUE(isOnScreen(window));
}

TEST_F(X11WindowManagerTest, WindowsOfAManagerThatHeedsNoRequestStayVisible) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    ASSERT_TRUE(spinUntil([&] { return isListed(window); }));
    PrivacyMode privacy(system, mainQueue);
    privacy.engine.activate({"a"});
    // The deadline of a request is over when one that was made later is.
    bool isOver = false;
    mainQueue.asyncAfter(Platform::MainQueue::Seconds(1.2), [&] { isOver = true; });
    ASSERT_TRUE(spinUntil([&] { return isOver; }));
    EXPECT_FALSE(isHidden(window));
    EXPECT_EQ(privacy.hiding.isHidden("a"), false);
    privacy.engine.deactivate();
    EXPECT_TRUE(isOnScreen(window));
}

TEST_F(X11WindowManagerTest, WindowIsActivatedOnlyWhereNothingElseBringsItBack) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::iconic, {hiddenState});
    listenAsManager();
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    manual.system.show(std::array{WindowId{window}});
    manual.advance(0.1);
    EXPECT_THAT(requests(manual).map, IsEmpty());
    manual.advance(0.1);
    EXPECT_THAT(requests(manual).map, testing::ElementsAre(window)) << "though it is mapped";
    manual.advance(0.8);
    EXPECT_THAT(requests(manual).activate, IsEmpty());
    manual.advance(0.4);
    const auto activations = requests(manual).activate;
    ASSERT_THAT(activations, testing::SizeIs(1));
    EXPECT_EQ(activations[0].window, window);
    EXPECT_EQ(activations[0].data.data32[0], PlatformTests::pager);
    EXPECT_NE(activations[0].data.data32[1], std::uint32_t{XCB_CURRENT_TIME});
    manual.advance(5);
    const auto last = requests(manual);
    EXPECT_THAT(last.map, IsEmpty()) << "it is asked once";
    EXPECT_THAT(last.activate, IsEmpty()) << "it is asked once";
}

TEST_F(X11WindowManagerTest, ManagerThatAnswersInTurnIsAskedForMoreOnlyWhenItHas) {
    ScriptedWindowManager manager;
    const auto window = hideUnderOneThatAnswers(manager);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    const auto answer = [&](const Requests& question) {
        ASSERT_THAT(question.asked, testing::SizeIs(1));
        client.setNumbers(question.asked[0], "_NET_FRAME_EXTENTS", XCB_ATOM_CARDINAL,
                          std::array{0U, 0U, 0U, 0U});
        manual.advance(0);
    };
    manual.system.show(std::array{WindowId{window}});
    manual.advance(5);
    const auto first = requests(manual);
    EXPECT_THAT(first.map, IsEmpty()) << "it is busy";
    answer(first);
    const auto second = requests(manual);
    EXPECT_THAT(second.map, testing::ElementsAre(window));
    manual.advance(20);
    EXPECT_THAT(requests(manual).activate, IsEmpty()) << "it is busy";
    answer(second);
    manual.advance(0.9);
    EXPECT_THAT(requests(manual).activate, IsEmpty());
    manual.advance(0.3);
    EXPECT_THAT(requests(manual).activate, testing::SizeIs(1));
}

TEST_F(X11WindowManagerTest, WindowIsAwaitedWhileABusyManagerOwesItUnlessItIsHiddenAgain) {
    ScriptedWindowManager manager;
    const auto window = hideUnderOneThatAnswers(manager);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    const std::array ids{WindowId{window}};
    EXPECT_FALSE(manual.system.isShowAwaited(window));
    manual.system.show(ids);
    manual.advance(20);
    EXPECT_TRUE(manual.system.isShowAwaited(window));
    manual.system.hide(ids);
    EXPECT_FALSE(manual.system.isShowAwaited(window));
    manual.advance(60);
    EXPECT_THAT(requests(manual).map, IsEmpty());
}

TEST_F(X11WindowManagerTest, WindowIsAwaitedHoweverLongAgoItWasHiddenBefore) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    listenAsManager();
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    const std::array ids{WindowId{window}};
    const auto isSeen = [&](bool isHidden) {
        return spinUntil([&] { return manual.system.windows().at(0).isHidden == isHidden; });
    };
    manual.system.hide(ids);
    manager.setStates(window, {hiddenState});
    ASSERT_TRUE(isSeen(true));
    manual.system.show(ids);
    manager.setStates(window, {});
    ASSERT_TRUE(isSeen(false));
    manual.advance(0.5);
    EXPECT_FALSE(manual.system.isShowAwaited(window));
    manual.system.hide(ids);
    manual.system.show(ids);
    manual.advance(0.6);
    EXPECT_TRUE(manual.system.isShowAwaited(window)) << "it is on its way out";
    manager.setStates(window, {hiddenState});
    ASSERT_TRUE(isSeen(true));
    manual.advance(0.2);
    EXPECT_THAT(requests(manual).map, testing::ElementsAre(window));
}

TEST_F(X11WindowManagerTest, OwnWindowsAreActivatedWithTheTimeOfTheServer) {
    listenAsManager();
    ManualSystem manual;
    LinuxPlatform::X11WindowManagerClient(*manual.connection).activate(client.create("a", "A"));
    const auto activations = requests(manual).activate;
    ASSERT_THAT(activations, testing::SizeIs(1));
    EXPECT_NE(activations[0].data.data32[1], std::uint32_t{XCB_CURRENT_TIME});
}

TEST_F(X11WindowManagerTest, RolledUpWindowStaysSoWhenItIsActivated) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    listenAsManager();
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    const auto statesAfterActivation = [&] {
        manual.system.activate(std::array{WindowId{window}});
        manual.advance(0.2);
        const auto asked = requests(manual);
        EXPECT_THAT(asked.activate, testing::SizeIs(1));
        return asked.statesThen;
    };
    EXPECT_THAT(statesAfterActivation(), IsEmpty());
    manager.setStates(window, {shadedState});
    const auto states = statesAfterActivation();
    ASSERT_THAT(states, testing::SizeIs(1));
    EXPECT_EQ(states[0].window, window);
    EXPECT_EQ(states[0].data.data32[0], 1U);
    EXPECT_EQ(states[0].data.data32[1], client.atom(shadedState));
}

TEST_F(X11WindowManagerTest, FocusThatMovedTheMomentBeforeIsRemembered) {
    ScriptedWindowManager manager;
    const auto low = openUnder(manager, ScriptedWindowManager::normal);
    const auto high = openBeside(manager, low);
    listenAsManager();
    ManualSystem manual;
    manager.setActive(high);
    ASSERT_TRUE(manual.lists(high));
    manual.advance(0);
    manager.setActive(low);
    const std::array apps{WindowId{low}, WindowId{high}};
    manual.system.hide(std::array{apps[0]});
    manager.setActive(high);
    manual.system.hide(std::array{apps[1]});
    for (const auto window : {low, high}) {
        manager.setStates(window, {hiddenState});
    }
    manual.advance(0);
    for (const auto app : apps) {
        manual.system.show(std::array{app});
        manual.system.activate(std::array{app});
        manager.setStates(static_cast<xcb_window_t>(app), {});
    }
    manual.advance(1);
    const auto activations = requests(manual).activate;
    ASSERT_THAT(activations, testing::SizeIs(1));
    EXPECT_EQ(activations[0].window, low);
}

TEST_F(X11WindowManagerTest, WindowThatIsOpenedWhileOthersComeBackKeepsTheFocus) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::iconic, {hiddenState});
    const auto earlier = openBeside(manager, window);
    listenAsManager();
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(earlier));
    const std::array ids{WindowId{window}};
    const auto giveBack = [&](const std::function<void()>& meanwhile) {
        manual.system.show(ids);
        manual.system.activate(ids);
        meanwhile();
        manager.setStates(window, {});
        manual.advance(1.5);
        return requests(manual).activate.size();
    };
    EXPECT_EQ(giveBack([&] { manager.setActive(earlier); }), 1U) << "the manager chose it";
    manager.setStates(window, {hiddenState});
    EXPECT_EQ(giveBack([&] {
                  const auto later = client.open("c", "C");
                  manager.setManagerState(later, ScriptedWindowManager::normal);
                  manager.list({window, earlier, later});
                  manager.setActive(later);
              }),
              0U)
        << "its user opened it";
    // They are asked for again in their turn.
    EXPECT_EQ(giveBack([] {}), 1U);
}

TEST_F(X11WindowManagerTest, FocusThatPassesThroughAWindowOnItsWayOutIsNoActivation) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    const auto other = openBeside(manager, window);
    ASSERT_TRUE(spinUntil([&] { return isListed(window) && isListed(other); }));
    system.hide(std::array{WindowId{window}});
    manager.setActive(window);
    EXPECT_THAT(system.windows(), testing::SizeIs(2));
    manager.setStates(window, {hiddenState});
    manager.setActive(other);
    ASSERT_TRUE(waitForEvent(WindowEvent::activated, other));
    EXPECT_THAT(events, testing::Not(testing::Contains(std::pair(WindowEvent::activated, WindowId{window}))));
    // Somebody brings it back.
    manager.setStates(window, {});
    manager.setActive(window);
    EXPECT_TRUE(waitForEvent(WindowEvent::activated, window));
}

TEST_F(X11WindowManagerTest, FocusThatComesAndGoesOnTheWayOutIsNoReturn) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal, {aboveState, focusedState});
    ASSERT_TRUE(spinUntil([&] { return isListed(window); }));
    connection->dispatchEvents();
    QCoreApplication::processEvents();
    events.clear();
    system.hide(std::array{WindowId{window}});
    manager.setStates(window, {aboveState});
    EXPECT_FALSE(isHidden(window));
    manager.setStates(window, {focusedState, aboveState});
    EXPECT_FALSE(isHidden(window));
    manager.setManagerState(window, ScriptedWindowManager::iconic);
    EXPECT_FALSE(isHidden(window));
    manager.setStates(window, {aboveState, hiddenState});
    EXPECT_TRUE(isHidden(window));
    QCoreApplication::processEvents();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(X11WindowManagerTest, WindowThatWasHiddenAndIsBackBeforeAnybodyLooksIsAnnounced) {
    ScriptedWindowManager manager;
    const auto mapped = openUnder(manager, ScriptedWindowManager::normal, {focusedState});
    const auto unmapped = client.open("b", "B");
    manager.setManagerState(unmapped, ScriptedWindowManager::normal);
    manager.list({mapped, unmapped});
    ASSERT_TRUE(waitForEvent(WindowEvent::opened, unmapped));
    events.clear();
    system.hide(std::array{WindowId{mapped}, WindowId{unmapped}});
    // One that leaves hidden windows mapped, and one that does not.
    for (const auto state : {ScriptedWindowManager::iconic, ScriptedWindowManager::normal}) {
        manager.setManagerState(mapped, state);
    }
    manager.setStates(mapped, {});
    manager.unmap(unmapped);
    manager.map(unmapped);
    manager.setStates(unmapped, {focusedState});
    EXPECT_TRUE(waitForEvent(WindowEvent::activated, mapped));
    EXPECT_TRUE(waitForEvent(WindowEvent::activated, unmapped));
}

TEST_F(X11WindowManagerTest, WindowThatIsMappedLateIsNotBackAgain) {
    ScriptedWindowManager manager;
    const auto window = client.create("a", "A");
    manager.setManagerState(window, ScriptedWindowManager::normal);
    manager.list({window});
    ASSERT_TRUE(waitForEvent(WindowEvent::opened, window));
    events.clear();
    system.hide(std::array{WindowId{window}});
    manager.map(window);
    EXPECT_FALSE(isHidden(window));
    manager.setStates(window, {hiddenState});
    EXPECT_TRUE(isHidden(window));
    QCoreApplication::processEvents();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(X11WindowManagerTest, MarkThatIsTakenOffLateIsNoSecondReturn) {
    ScriptedWindowManager manager;
    const auto window = client.create("a", "A");
    manager.setManagerState(window, ScriptedWindowManager::iconic);
    manager.setStates(window, {hiddenState});
    manager.list({window});
    ASSERT_TRUE(spinUntil([&] { return isHidden(window); }));
    client.map(window);
    manager.setManagerState(window, ScriptedWindowManager::normal);
    ASSERT_TRUE(waitForEvent(WindowEvent::activated, window));
    events.clear();
    system.hide(std::array{WindowId{window}});
    manager.setStates(window, {});
    EXPECT_FALSE(isHidden(window));
    QCoreApplication::processEvents();
    manager.unmap(window);
    manager.setStates(window, {hiddenState});
    EXPECT_TRUE(isHidden(window));
    QCoreApplication::processEvents();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(X11WindowManagerTest, StateOfAWindowThatTheManagerDoesNotHideMeansNoReturnLater) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    manual.system.hide(std::array{WindowId{window}});
    manual.advance(2.1);
    manager.setStates(window, {aboveState});
    manual.advance(0);
    EXPECT_THAT(manual.events, IsEmpty());
}

TEST_F(X11WindowManagerTest, ManagerThatIgnoresHidingIsFoundOut) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
    manual.system.hide(std::array{WindowId{window}});
    manual.advance(0.9);
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
    manual.advance(0.2);
    EXPECT_EQ(manual.system.hidingObstacle(), notKnownYet) << "it may be busy";
    manual.advance(3.8);
    EXPECT_EQ(manual.system.hidingObstacle(), notKnownYet);
    manual.advance(0.2);
    EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding);
    // It was busy after all.
    manager.setStates(window, {hiddenState});
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, TakingAWindowInIsNoAnswerToTheRequestToHideIt) {
    ScriptedWindowManager manager;
    const auto window = openListedOnly(manager);
    ManualSystem manual;
    manual.hideOnceListed(window);
    manager.setManagerState(window, ScriptedWindowManager::normal);
    // And so it refuses.
    manager.setManagerState(window, ScriptedWindowManager::normal);
    manual.advance(5.1);
    EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding);
    EXPECT_THAT(manual.events, Not(Contains(std::pair(WindowEvent::activated, WindowId{window}))));
}

TEST_F(X11WindowManagerTest, WindowThatIsTakenInAndHiddenAndIsBackBeforeAnybodyLooksIsAnnounced) {
    ScriptedWindowManager manager;
    const auto window = openListedOnly(manager);
    ManualSystem manual;
    manual.hideOnceListed(window);
    const std::pair back(WindowEvent::activated, WindowId{window});
    manual.advance(0);
    ASSERT_THAT(manual.events, Not(Contains(back)));
    for (const auto state :
         {ScriptedWindowManager::normal, ScriptedWindowManager::iconic, ScriptedWindowManager::normal}) {
        manager.setManagerState(window, state);
    }
    manual.advance(0);
    EXPECT_THAT(manual.events, Contains(back));
}

TEST_F(X11WindowManagerTest, ManagerThatPausesDoesNotIgnoreHiding) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    manual.system.hide(std::array{WindowId{window}});
    manual.advance(4.5);
    EXPECT_EQ(manual.system.hidingObstacle(), notKnownYet);
    manager.setStates(window, {hiddenState});
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
    manual.advance(5);
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, AppsThatAreHiddenOneAfterAnotherShortenNoDeadline) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    const auto other = openBeside(manager, window);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(other));
    manual.system.hide(std::array{WindowId{window}});
    manual.system.hide(std::array{WindowId{other}});
    manual.advance(4.9);
    EXPECT_EQ(manual.system.hidingObstacle(), notKnownYet);
    manual.advance(0.2);
    EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding);
}

TEST_F(X11WindowManagerTest, ManagerThatHasHiddenAWindowOnceDoesNotIgnoreHiding) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    const auto stubborn = openBeside(manager, window);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(stubborn));
    manual.system.hide(std::array{WindowId{window}});
    manager.setStates(window, {hiddenState});
    manual.advance(0);
    manual.system.hide(std::array{WindowId{stubborn}});
    manual.advance(10);
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, WindowThatIsClosedSaysNothingOfItsManager) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    const auto closed = openBeside(manager, window);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(closed));
    manual.system.hide(std::array{WindowId{window}, WindowId{closed}});
    manual.advance(0.5);
    client.destroy(closed);
    manager.list({window});
    manual.advance(5);
    EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding);
    client.destroy(window);
    manager.list({});
    manual.advance(0);
    EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding);
}

TEST_F(X11WindowManagerTest, WindowsThatMayNotBeMinimizedSayNothingOfTheirManager) {
    const auto numbers = [this](xcb_window_t window, const char* name, xcb_atom_t type,
                                std::vector<std::uint32_t> values) {
        client.setNumbers(window, name, type, values);
    };
    const auto motif = client.atom("_MOTIF_WM_HINTS");
    const std::vector<std::pair<const char*, std::function<void(xcb_window_t)>>> kinds{
        {"functions without minimize",
         [&](auto window) {
             numbers(window, "_MOTIF_WM_HINTS", motif, {1, 2 | 4 | 32, 0, 0, 0});
         }},
        {"all functions but minimize",
         [&](auto window) {
             numbers(window, "_MOTIF_WM_HINTS", motif, {1, 1 | 8, 0, 0, 0});
         }},
        {"actions without minimize",
         [&](auto window) {
             numbers(window, "_NET_WM_ALLOWED_ACTIONS", XCB_ATOM_ATOM, {client.atom("_NET_WM_ACTION_MOVE")});
         }},
        {"transient",
         [&](auto window) { numbers(window, "WM_TRANSIENT_FOR", XCB_ATOM_WINDOW, {client.root()}); }},
        {"not in task lists",
         [&](auto window) {
             numbers(window, "_NET_WM_STATE", XCB_ATOM_ATOM, {client.atom("_NET_WM_STATE_SKIP_TASKBAR")});
         }},
        {"utility", [&](auto window) {
             numbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                     {client.atom("_NET_WM_WINDOW_TYPE_UTILITY")});
         }}};
    ScriptedWindowManager manager;
    manager.support({"_NET_CLIENT_LIST", "_NET_WM_ACTION_MINIMIZE"});
    for (const auto& [name, makeSo] : kinds) {
        SCOPED_TRACE(name);
        const auto window = client.create("a", "A");
        makeSo(window);
        client.map(window);
        manager.setManagerState(window, ScriptedWindowManager::normal);
        manager.list({window});
        ManualSystem manual;
        ASSERT_TRUE(manual.lists(window));
        manual.system.hide(std::array{WindowId{window}});
        manual.advance(6);
        EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
        client.destroy(window);
    }
}

TEST_F(X11WindowManagerTest, WindowsThatMayBeMinimizedTellThatTheirManagerIgnoresHiding) {
    ScriptedWindowManager manager;
    for (const bool doesManagerKnowTheAction : {true, false}) {
        manager.support({"_NET_CLIENT_LIST",
                         doesManagerKnowTheAction ? "_NET_WM_ACTION_MINIMIZE" : "_NET_WM_ACTION_MOVE"});
        const auto window = client.create("a", "A");
        client.setNumbers(window, "_NET_WM_ALLOWED_ACTIONS", XCB_ATOM_ATOM,
                          std::array{client.atom(doesManagerKnowTheAction ? "_NET_WM_ACTION_MINIMIZE"
                                                                          : "_NET_WM_ACTION_MOVE")});
        client.setNumbers(window, "_MOTIF_WM_HINTS", client.atom("_MOTIF_WM_HINTS"),
                          std::array{1U | 2U, 1U, 0U, 0U, 0U});
        client.map(window);
        manager.setManagerState(window, ScriptedWindowManager::normal);
        manager.list({window});
        ManualSystem manual;
        ASSERT_TRUE(manual.lists(window));
        manual.system.hide(std::array{WindowId{window}});
        manual.advance(6);
        EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding) << doesManagerKnowTheAction;
        client.destroy(window);
    }
}

TEST_F(X11WindowManagerTest, ManagerIsAskedOnceMoreBeforeItIsSaidToIgnoreHiding) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(client.get(), client.root(), XCB_CW_EVENT_MASK, &mask);
    client.sync();
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    manual.system.hide(std::array{WindowId{window}});
    EXPECT_EQ(requestsToHide(manual), 1);
    manual.advance(1.1);
    EXPECT_EQ(requestsToHide(manual), 1);
    manual.advance(5);
    EXPECT_EQ(requestsToHide(manual), 0);
}

TEST_F(X11WindowManagerTest, NextManagerIsJudgedAnew) {
    std::optional<ScriptedWindowManager> manager(std::in_place);
    const auto window = openUnder(*manager, ScriptedWindowManager::normal);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    manual.system.hide(std::array{WindowId{window}});
    manual.advance(5.1);
    EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding);
    manager.reset();
    ScriptedWindowManager next;
    next.list({window});
    EXPECT_TRUE(spinUntil([&] { return !manual.system.hidingObstacle(); }));
}

TEST_F(X11WindowManagerTest, ManagerThatHidesOneWindowOfSeveralDoesNotIgnoreHiding) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    const auto stubborn = openBeside(manager, window);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(stubborn));
    manual.system.hide(std::array{WindowId{window}, WindowId{stubborn}});
    manager.setStates(window, {hiddenState});
    manual.advance(6);
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, WindowsThatAreBackOrThatManagersRefuseToHideSayNothing) {
    ScriptedWindowManager manager;
    const auto brief = openUnder(manager, ScriptedWindowManager::normal);
    const auto bar = client.create("b", "B");
    client.setNumbers(bar, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                      std::array{client.atom("_NET_WM_WINDOW_TYPE_TOOLBAR")});
    client.map(bar);
    manager.setManagerState(bar, ScriptedWindowManager::normal);
    manager.list({brief, bar});
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(bar));
    manual.system.hide(std::array{WindowId{bar}});
    manual.advance(6);
    manual.system.hide(std::array{WindowId{brief}});
    manual.system.show(std::array{WindowId{brief}});
    manual.advance(6);
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, WindowThatTheManagerDoesNotHideIsActivatedAsAnyOther) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    ASSERT_TRUE(spinUntil([&] { return isListed(window); }));
    system.hide(std::array{WindowId{window}});
    bool isOver = false;
    mainQueue.asyncAfter(Platform::MainQueue::Seconds(1.1), [&] { isOver = true; });
    ASSERT_TRUE(spinUntil([&] { return isOver; }));
    manager.setActive(window);
    EXPECT_TRUE(waitForEvent(WindowEvent::activated, window));
}

TEST_F(X11WindowManagerTest, WindowThatIsAskedInVainTwiceIsActivatedAsAnyOther) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    EXPECT_EQ(activationsAfterHidingInVain(window, 2, 1), 1U);
}

TEST_F(X11WindowManagerTest, WindowOfWhichOneCannotTellWhetherItIsHiddenIsActivatedInTheEnd) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal, {shadedState});
    EXPECT_EQ(activationsAfterHidingInVain(window, 1, 10), 1U);
}

TEST_F(X11WindowManagerTest, WindowThatIsOnItsWayOutDoesNotGetTheFocusBack) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::iconic, {hiddenState});
    const auto leaving = openBeside(manager, window);
    manager.setActive(leaving);
    listenAsManager();
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(leaving));
    manual.system.show(std::array{WindowId{window}});
    manual.advance(1);
    EXPECT_THAT(requests(manual).activate, IsEmpty());
    manual.system.hide(std::array{WindowId{leaving}});
    manual.advance(0.4);
    const auto activations = requests(manual).activate;
    ASSERT_THAT(activations, testing::SizeIs(1));
    EXPECT_EQ(activations[0].window, window);
}

TEST_F(X11WindowManagerTest, HiddenWindowThatStaysMappedIsHidden) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    ASSERT_TRUE(spinUntil([&] { return isListed(window); }));
    manager.setStates(window, {hiddenState});
    EXPECT_TRUE(spinUntil([&] { return isHidden(window); }));
    manager.setManagerState(window, ScriptedWindowManager::iconic);
    manager.setStates(window, {hiddenState, "_NET_WM_STATE_ABOVE"});
    ASSERT_TRUE(isOnScreen(window));
    EXPECT_TRUE(isHidden(window));
}

TEST_F(X11WindowManagerTest, MarkThatAFormerManagerLeftOnAVisibleWindowIsNotBelieved) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal, {hiddenState});
    const auto iconic = client.open("b", "B");
    manager.setManagerState(iconic, ScriptedWindowManager::iconic);
    manager.setStates(iconic, {hiddenState});
    const auto unmapped = client.create("c", "C");
    manager.setManagerState(unmapped, ScriptedWindowManager::normal);
    manager.setStates(unmapped, {hiddenState});
    manager.list({window, iconic, unmapped});
    const auto other = X11Connection::open();
    X11WindowSystem late(*other, mainQueue);
    std::map<WindowId, bool> hidden;
    for (const auto& each : late.windows()) {
        hidden[each.id] = each.isHidden;
    }
    EXPECT_EQ(hidden, (std::map<WindowId, bool>{{window, false}, {iconic, true}, {unmapped, true}}));
}

TEST_F(X11WindowManagerTest, WindowThatIsShownWithItsMarkOnIsVisibleAndAnnounced) {
    ScriptedWindowManager manager;
    const auto window = client.create("a", "A");
    manager.setManagerState(window, ScriptedWindowManager::iconic);
    manager.setStates(window, {hiddenState});
    manager.list({window});
    ASSERT_TRUE(spinUntil([&] { return isHidden(window); }));
    events.clear();
    client.map(window);
    manager.setManagerState(window, ScriptedWindowManager::normal);
    EXPECT_TRUE(waitForEvent(WindowEvent::activated, window));
    EXPECT_FALSE(isHidden(window));
    // Such a manager writes other states and leaves the mark alone.
    manager.setStates(window, {hiddenState, "_NET_WM_STATE_FOCUSED"});
    client.sync();
    EXPECT_FALSE(isHidden(window));
    xcb_unmap_window(client.get(), window);
    client.sync();
    EXPECT_TRUE(spinUntil([&] { return isHidden(window); }));
}

TEST_F(X11WindowManagerTest, WindowsCanBeHiddenAsSoonAndAsLongAsThereIsAManager) {
    EXPECT_EQ(system.hidingObstacle(), Platform::HidingObstacle::noWindowManager);
    std::optional<ScriptedWindowManager> manager(std::in_place);
    manager->list({});
    EXPECT_TRUE(spinUntil([&] { return !system.hidingObstacle(); }));
    EXPECT_TRUE(system.knowsEveryWindow());
    manager.reset();
    EXPECT_TRUE(
        spinUntil([&] { return system.hidingObstacle() == Platform::HidingObstacle::noWindowManager; }));
    EXPECT_FALSE(system.knowsEveryWindow());
}

TEST_F(X11WindowManagerTest, ListThatAManagerFindsSaysNothingUntilItIsItsOwn) {
    std::optional<ScriptedWindowManager> manager(std::in_place);
    const auto window = openUnder(*manager, ScriptedWindowManager::normal);
    ASSERT_TRUE(spinUntil([&] { return isListed(window) && system.knowsEveryWindow(); }));
    manager.reset();
    ASSERT_TRUE(spinUntil([&] { return !system.knowsEveryWindow(); }));
    const auto unseen = client.open("b", "B");
    ScriptedWindowManager next;
    ASSERT_TRUE(spinUntil([&] { return isListed(window); }));
    EXPECT_FALSE(system.knowsEveryWindow());
    EXPECT_EQ(system.hidingObstacle(), Platform::HidingObstacle::notKnownYet);
    next.list({window, unseen});
    EXPECT_TRUE(spinUntil([&] { return system.knowsEveryWindow(); }));
    EXPECT_EQ(system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, ListThatWasWrittenBeforeTheFormerManagerIsGoneIsBelieved) {
    std::optional<ScriptedWindowManager> manager(std::in_place);
    const auto window = openUnder(*manager, ScriptedWindowManager::normal);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    ScriptedWindowManager next;
    next.list({window});
    manager.reset();
    client.sync();
    EXPECT_TRUE(spinUntil([&] { return manual.system.knowsEveryWindow(); }));
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, ListStaysOldWhereItsManagerTookItsNameBack) {
    std::optional<ScriptedWindowManager> manager(std::in_place);
    const auto window = openUnder(*manager, ScriptedWindowManager::normal);
    ManualSystem manual;
    ASSERT_TRUE(manual.lists(window));
    xcb_delete_property(client.get(), client.root(), client.atom("_NET_SUPPORTING_WM_CHECK"));
    client.sync();
    manager.reset();
    ScriptedWindowManager next;
    client.sync();
    EXPECT_EQ(manual.system.hidingObstacle(), notKnownYet);
    EXPECT_FALSE(manual.system.knowsEveryWindow());
}

TEST_F(X11WindowManagerTest, NothingIsKnownOfTheWindowsOfAManagerThatListsNone) {
    ScriptedWindowManager manager;
    manager.support({"_NET_ACTIVE_WINDOW"});
    client.open("a", "A");
    ManualSystem manual;
    EXPECT_EQ(manual.system.hidingObstacle(), notKnownYet) << "it may be starting";
    manual.advance(4.9);
    EXPECT_EQ(manual.system.hidingObstacle(), notKnownYet);
    manual.advance(0.2);
    EXPECT_EQ(manual.system.hidingObstacle(), ignoresHiding);
    EXPECT_FALSE(manual.system.knowsEveryWindow());
    manager.support({"_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST"});
    EXPECT_TRUE(spinUntil([&] { return manual.system.knowsEveryWindow(); })) << "it may have none yet";
    EXPECT_EQ(manual.system.hidingObstacle(), std::nullopt);
}

TEST_F(X11WindowManagerTest, RolledUpWindowThatIsMarkedHiddenIsVisibleAsLongAsItsTitleBarIs) {
    ScriptedWindowManager manager;
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    ASSERT_TRUE(spinUntil([&] { return isListed(window); }));
    const auto frame = manager.frame(window);
    manager.unmap(window);
    manager.setManagerState(window, ScriptedWindowManager::iconic);
    manager.setStates(window, {shadedState, hiddenState});
    EXPECT_FALSE(isHidden(window));
    const auto other = X11Connection::open();
    X11WindowSystem late(*other, mainQueue);
    EXPECT_FALSE(late.windows().front().isHidden);

    // Now it is put away.
    manager.setStates(window, {shadedState, hiddenState});
    EXPECT_FALSE(isHidden(window));
    manager.unmap(frame);
    EXPECT_TRUE(isHidden(window));
    EXPECT_TRUE(late.windows().front().isHidden);
    events.clear();
    manager.map(frame);
    EXPECT_TRUE(waitForEvent(WindowEvent::activated, window));
    EXPECT_FALSE(isHidden(window));
    manager.map(window);
    manager.setStates(window, {});
    EXPECT_FALSE(isHidden(window));
}

TEST_F(X11WindowManagerTest, WindowsCanBeHiddenUnderAManagerThatOnlyListsThem) {
    const auto window = client.open("a", "A");
    client.setNumbers(client.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, std::array{window});
    client.sync();
    EXPECT_TRUE(spinUntil([&] { return !system.hidingObstacle(); }));
}

TEST_F(X11WindowManagerTest, ListOfAManagerThatIsGoneSaysNothing) {
    std::optional<ScriptedWindowManager> manager(std::in_place);
    const auto window = openUnder(*manager, ScriptedWindowManager::iconic, {hiddenState});
    ASSERT_TRUE(spinUntil([&] { return isHidden(window); }));
    manager.reset();
    EXPECT_TRUE(spinUntil([&] { return !isListed(window); }));
    EXPECT_TRUE(client.isListed(window)) << "still on the root window";
    EXPECT_TRUE(system.exists(window));

    const auto other = X11Connection::open();
    X11WindowSystem late(*other, mainQueue);
    EXPECT_THAT(late.windows(), IsEmpty());
}

TEST_F(X11WindowManagerTest, WindowsAreOpenedAgainUnderAnotherManager) {
    std::optional<ScriptedWindowManager> manager(std::in_place);
    const auto window = openUnder(*manager, ScriptedWindowManager::normal);
    ASSERT_TRUE(waitForEvent(WindowEvent::opened, window));
    manager.reset();
    ASSERT_TRUE(spinUntil([&] { return !isListed(window); }));
    events.clear();
    ScriptedWindowManager next;
    EXPECT_TRUE(waitForEvent(WindowEvent::opened, window));
    EXPECT_TRUE(isListed(window));
}

TEST_F(X11WindowManagerTest, ManagerMayTakeItsTimeToNameItself) {
    const auto check = client.create("check", "Check");
    client.setNumbers(client.root(), "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, std::array{check});
    const auto window = client.open("a", "A");
    client.setNumbers(client.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW, std::array{window});
    EXPECT_FALSE(isListed(window));
    client.setNumbers(check, "_NET_SUPPORTING_WM_CHECK", XCB_ATOM_WINDOW, std::array{check});
    EXPECT_TRUE(spinUntil([&] { return isListed(window); }));
}

TEST_F(X11WindowManagerTest, ManagerThatShowsNoWindowOfItsOwnIsBelieved) {
    ScriptedWindowManager manager;
    manager.withdraw();
    const auto window = openUnder(manager, ScriptedWindowManager::normal);
    EXPECT_TRUE(spinUntil([&] { return isListed(window); }));
}

TEST_F(X11WindowManagerTest, IdentifierThatIsUsedAgainWhileItIsStillInTheListIsANewWindow) {
    ScriptedWindowManager manager;
    auto old = std::make_unique<X11TestClient>();
    const auto window = old->open("old", "Old");
    manager.setManagerState(window, ScriptedWindowManager::normal);
    manager.list({window});
    ASSERT_TRUE(waitForEvent(WindowEvent::opened, window));
    const auto birth = find(window)->birth;
    old.reset();

    // The server gives the identifiers of a connection that ended to the next one.
    X11TestClient fresh;
    ASSERT_EQ(fresh.create("fresh", "Fresh"), window);
    manager.list({window});
    ASSERT_TRUE(spinUntil([&] { return find(window) && find(window)->hints.className == "Fresh"; }));
    EXPECT_NE(find(window)->birth, birth);
    connection->dispatchEvents();
    QCoreApplication::processEvents();
    events.clear();
    fresh.map(window);
    manager.setManagerState(window, ScriptedWindowManager::normal);
    manager.list({window});
    EXPECT_TRUE(waitForEvent(WindowEvent::opened, window));
}

TEST_F(X11WindowManagerTest, IdentifierThatIsUsedAgainBeforeTheFirstReadingIsANewWindow) {
    ScriptedWindowManager manager;
    auto old = std::make_unique<X11TestClient>();
    const auto window = old->open("old", "Old");
    manager.list({window});
    old.reset();
    X11TestClient fresh;
    ASSERT_EQ(fresh.create("fresh", "Fresh"), window);

    const auto other = X11Connection::open();
    X11WindowSystem late(*other, mainQueue);
    std::vector<WindowId> opened;
    const auto handler = late.addEventHandler([&](WindowEvent event, const Window& which) {
        if (event == WindowEvent::opened) {
            opened.push_back(which.id);
        }
    });
    ASSERT_FALSE(late.windows().empty());
    fresh.map(window);
    manager.setManagerState(window, ScriptedWindowManager::normal);
    EXPECT_TRUE(spinUntil([&] { return !opened.empty(); }));
}

struct Change {
    std::string name;
    std::vector<std::string> first;
    std::vector<std::string> second;
    /// Whether the second takes over from the first, or is started when the first has been killed.
    bool replaces;

    friend void PrintTo(const Change& change, std::ostream* stream) { *stream << change.name; }
};

class ManagerProcess {
public:
    explicit ManagerProcess(const std::vector<std::string>& command) : process_(command) {}

    bool isUp() const {
        const auto window = checkWindow(client_.root());
        return window != formerWindow_ && window != XCB_WINDOW_NONE && checkWindow(window) == window;
    }

    void kill() { process_.end(SIGKILL); }

private:
    xcb_window_t checkWindow(xcb_window_t window) const {
        const auto answer = client_.numbers(window, "_NET_SUPPORTING_WM_CHECK");
        return answer.empty() ? xcb_window_t{XCB_WINDOW_NONE} : answer.front();
    }

    X11TestClient client_;
    xcb_window_t formerWindow_ = checkWindow(client_.root());
    ChildProcess process_;
};

struct X11ManagerChangeTest : X11WindowManagerTest, testing::WithParamInterface<Change> {};

TEST_P(X11ManagerChangeTest, HiddenAppsStayHiddenAndComeBackAtTheEnd) {
    // First the windows: openbox forgets about those that are opened while it starts.
    const auto one = client.open("private", "Private");
    const auto two = client.open("private", "Private");
    const auto other = client.open("other", "Other");
    const auto putAway = client.open("private", "Private");
    ManagerProcess first(GetParam().first);
    for (const auto window : {one, two, other, putAway}) {
        waitUntilListed(window);
    }
    hide(putAway);

    PrivacyMode privacy(system, mainQueue);
    const auto isPrivateHidden = [&] { return isHidden(one) && isHidden(two) && isHidden(putAway); };
    privacy.engine.activate({"private"});
    ASSERT_TRUE(spinUntil(isPrivateHidden));

    if (!GetParam().replaces) {
        first.kill();
        ASSERT_TRUE(spinUntil([&] { return !isListed(one); }));
    }
    ManagerProcess second(GetParam().second);
    ASSERT_TRUE(spinUntil([&] { return second.isUp() && isListed(one) && isListed(other); }));
    EXPECT_TRUE(spinUntil([&] {
        return isPrivateHidden() && !isHidden(other) && !isOnScreen(one) && !isOnScreen(two) &&
               !isOnScreen(putAway) && isOnScreen(other);
    }));

    privacy.engine.deactivate();
    EXPECT_TRUE(spinUntil([&] {
        return !isHidden(one) && !isHidden(two) && isOnScreen(one) && isOnScreen(two) && isOnScreen(other);
    }));
    EXPECT_TRUE(isHidden(putAway));
    EXPECT_FALSE(isOnScreen(putAway));
}

INSTANTIATE_TEST_SUITE_P(
    WindowManagers, X11ManagerChangeTest,
    testing::Values(Change{"OpenboxToXfwm4", {"openbox"}, {"xfwm4", "--replace", "--compositor=on"}, true},
                    Change{"Xfwm4ToOpenbox", {"xfwm4", "--compositor=off"}, {"openbox", "--replace"}, true},
                    Change{"OpenboxAgain", {"openbox"}, {"openbox", "--replace"}, true},
                    Change{"Xfwm4Again", {"xfwm4"}, {"xfwm4", "--replace"}, true},
                    Change{"OpenboxKilled", {"openbox"}, {"openbox"}, false},
                    Change{"Xfwm4Killed", {"xfwm4"}, {"xfwm4"}, false},
                    Change{"OpenboxKilledThenXfwm4", {"openbox"}, {"xfwm4"}, false},
                    Change{"Xfwm4KilledThenOpenbox", {"xfwm4"}, {"openbox"}, false}),
    [](const auto& change) { return change.param.name; });

} // namespace
