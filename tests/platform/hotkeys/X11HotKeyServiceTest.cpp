#include "platform/linux/hotkeys/X11HotKeyService.h"

#include "platform/qt/QtMainQueue.h"
#include "tests/platform/hotkeys/HotKeyServiceContract.h"
#include "tests/platform/windows/WindowManagerQuestion.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EventLoop.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/X11TestClient.h"

#include <xcb/xtest.h>

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/socket.h>

namespace {

using LinuxPlatform::X11Connection;
using LinuxPlatform::X11HotKeyService;
using Platform::HotKeyEvent;
using Platform::HotKeyID;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using TestSupport::ChildProcess;
using TestSupport::spinUntil;
using TestSupport::X11TestClient;

/// X key codes of a PC keyboard.
constexpr xcb_keycode_t controlKey = 37;
constexpr xcb_keycode_t shiftKey = 50;
constexpr xcb_keycode_t altKey = 64;
constexpr xcb_keycode_t superKey = 133;
constexpr xcb_keycode_t capsLockKey = 66;
constexpr xcb_keycode_t numLockKey = 77;
constexpr xcb_keycode_t hKey = 43;
constexpr xcb_keycode_t jKey = 44;

constexpr Platform::HotKeyCombination toggle{4, 6400};
constexpr HotKeyID toggleID{0x53534B53, 1};

/// Types on the server's keyboard, as a hand would.
class Typist {
public:
    void press(xcb_keycode_t key) { send(XCB_KEY_PRESS, key); }
    void release(xcb_keycode_t key) { send(XCB_KEY_RELEASE, key); }
    void tap(xcb_keycode_t key) {
        press(key);
        release(key);
    }
    void pressModifiers() {
        for (const auto key : {controlKey, altKey, superKey}) {
            press(key);
        }
    }
    void releaseModifiers() {
        for (const auto key : {superKey, altKey, controlKey}) {
            release(key);
        }
    }

private:
    void send(std::uint8_t type, xcb_keycode_t key) {
        xcb_test_fake_input(client_.get(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        client_.sync();
    }

    X11TestClient client_;
};

/// Repeats of the keys that are held, which the virtual desktop has switched off.
class KeyRepeats {
public:
    KeyRepeats() { set("on"); }
    ~KeyRepeats() { set("off"); }
    KeyRepeats(const KeyRepeats&) = delete;
    KeyRepeats& operator=(const KeyRepeats&) = delete;

private:
    static void set(const char* value) { EXPECT_TRUE(ChildProcess({"xset", "r", value}).succeeds()); }
};

struct X11HotKeyServiceTest : testing::Test {
    QtPlatform::QtMainQueue mainQueue;
    TestSupport::RecordingLog log;
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    std::optional<X11HotKeyService> service{std::in_place, *connection, mainQueue, log,
                                            Platform::HotKeyReach::everywhere};
    std::vector<std::pair<HotKeyEvent, std::uint32_t>> events;
    Platform::Subscription subscription = service->installEventHandler(
        [this](HotKeyEvent event, HotKeyID id) { events.emplace_back(event, id.id); });
    Typist typist;

    /// Events come in order: once those of another combination are here, all earlier ones are.
    void settle() {
        constexpr HotKeyID markerID{1, 99};
        ASSERT_EQ(service->registerHotKey({38, 0}, markerID), 0);
        typist.tap(jKey);
        ASSERT_TRUE(spinUntil(
            [&] { return !events.empty() && events.back() == std::pair(HotKeyEvent::released, 99U); }));
        service->unregisterHotKey(markerID);
        std::erase_if(events, [](const auto& event) { return event.second == 99; });
    }

    void typeToggle() {
        typist.pressModifiers();
        typist.tap(hKey);
        typist.releaseModifiers();
    }
};

const auto pressedAndReleased =
    ElementsAre(std::pair(HotKeyEvent::pressed, 1U), std::pair(HotKeyEvent::released, 1U));

TEST_F(X11HotKeyServiceTest, AKeyThatAnotherProgramMakesUpIsNotHeeded) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    auto* const xcb = connection->get();
    const auto window = xcb_generate_id(xcb);
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window, connection->root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    connection->serverTime();
    X11TestClient other;
    for (const auto type : {XCB_KEY_PRESS, XCB_KEY_RELEASE}) {
        xcb_key_press_event_t event{};
        event.response_type = static_cast<std::uint8_t>(type);
        event.detail = hKey;
        event.event = window;
        event.state = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4;
        xcb_send_event(other.get(), 0, window, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char*>(&event));
    }
    other.sync();
    settle();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(X11HotKeyServiceTest, PressAndReleaseAreTold) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    typist.pressModifiers();
    typist.press(hKey);
    ASSERT_TRUE(spinUntil([&] { return !events.empty(); }));
    EXPECT_THAT(events, ElementsAre(std::pair(HotKeyEvent::pressed, 1U)));
    typist.release(hKey);
    typist.releaseModifiers();
    settle();
    EXPECT_THAT(events, pressedAndReleased);
}

TEST_F(X11HotKeyServiceTest, WorksUnderEveryCombinationOfLocks) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    for (const auto& locks :
         std::vector<std::vector<xcb_keycode_t>>{{capsLockKey}, {numLockKey}, {capsLockKey, numLockKey}}) {
        for (const auto lock : locks) {
            typist.tap(lock);
        }
        typeToggle();
        for (const auto lock : locks) {
            typist.tap(lock);
        }
        settle();
        EXPECT_THAT(events, pressedAndReleased);
        events.clear();
    }
}

TEST_F(X11HotKeyServiceTest, ModifiersMayBeReleasedFirst) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    typist.pressModifiers();
    typist.press(hKey);
    typist.releaseModifiers();
    typist.release(hKey);
    settle();
    EXPECT_THAT(events, pressedAndReleased);
}

TEST_F(X11HotKeyServiceTest, OtherCombinationsAreNotTold) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    typist.tap(hKey);
    typist.press(shiftKey);
    typeToggle();
    typist.release(shiftKey);
    typist.press(controlKey);
    typist.tap(hKey);
    typist.release(controlKey);
    settle();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(X11HotKeyServiceTest, HeldKeyIsOnePressAndOneRelease) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    const KeyRepeats repeats;
    typist.pressModifiers();
    typist.press(hKey);
    // Long enough for the server to repeat the key: it begins after 660 ms.
    ASSERT_FALSE(spinUntil([&] { return events.size() > 1; }, std::chrono::milliseconds(900)));
    typist.release(hKey);
    typist.releaseModifiers();
    settle();
    EXPECT_THAT(events, pressedAndReleased);
}

TEST_F(X11HotKeyServiceTest, CombinationThatAnotherClientHoldsIsRefusedWhole) {
    const auto other = X11Connection::open();
    {
        X11HotKeyService holder(*other, mainQueue, log, Platform::HotKeyReach::everywhere);
        ASSERT_EQ(holder.registerHotKey(toggle, {1, 1}), 0);
        EXPECT_EQ(service->registerHotKey(toggle, toggleID), Platform::hotKeyExists);
    }
    other->flush();
    const LinuxPlatform::XcbPointer<xcb_get_input_focus_reply_t> barrier(
        xcb_get_input_focus_reply(other->get(), xcb_get_input_focus(other->get()), nullptr));
    EXPECT_EQ(service->registerHotKey(toggle, toggleID), 0) << "nothing may be left of either attempt";
}

TEST_F(X11HotKeyServiceTest, RefusalLeavesNoPartOfTheCombinationTaken) {
    const auto other = X11Connection::open();
    // Only the variant with Caps Lock is held.
    xcb_grab_key(other->get(), 0, other->root(),
                 XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4 | XCB_MOD_MASK_LOCK, hKey,
                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const LinuxPlatform::XcbPointer<xcb_get_input_focus_reply_t> barrier(
        xcb_get_input_focus_reply(other->get(), xcb_get_input_focus(other->get()), nullptr));
    EXPECT_EQ(service->registerHotKey(toggle, toggleID), Platform::hotKeyExists);
    const auto third = X11Connection::open();
    const LinuxPlatform::XcbPointer<xcb_generic_error_t> error(xcb_request_check(
        third->get(), xcb_grab_key_checked(third->get(), 0, third->root(),
                                           XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4, hKey,
                                           XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    EXPECT_EQ(error, nullptr);
}

TEST_F(X11HotKeyServiceTest, KeysThatNoKeyboardHasAreInvalid) {
    EXPECT_EQ(service->registerHotKey({-1, 0}, toggleID), Platform::hotKeyInvalid);
    EXPECT_EQ(service->registerHotKey({127, 0}, toggleID), Platform::hotKeyInvalid);
    EXPECT_EQ(service->registerHotKey({1'000'000, 0}, toggleID), Platform::hotKeyInvalid);
}

TEST_F(X11HotKeyServiceTest, ModifiersThatNoKeyboardHasAreInvalid) {
    // The function key, and bits without a meaning: without them the bare key would be taken from everybody.
    for (const std::int64_t modifiers : {131072, 131072 + 6400, 1024, 1, 1 << 20}) {
        EXPECT_EQ(service->registerHotKey({4, modifiers}, toggleID), Platform::hotKeyInvalid) << modifiers;
    }
    EXPECT_EQ(service->registerHotKey({4, -1}, toggleID), Platform::hotKeyInvalid);
    typist.tap(hKey);
    settle();
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(X11HotKeyServiceTest, UnregisteredCombinationGoesBackToTheOthers) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    service->unregisterHotKey(toggleID);
    service->unregisterHotKey(toggleID);
    typeToggle();
    settle();
    EXPECT_THAT(events, IsEmpty());
    const auto other = X11Connection::open();
    X11HotKeyService next(*other, mainQueue, log, Platform::HotKeyReach::everywhere);
    EXPECT_EQ(next.registerHotKey(toggle, toggleID), 0);
}

TEST_F(X11HotKeyServiceTest, SeveralCombinationsAreToldApart) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    ASSERT_EQ(service->registerHotKey({4, 4096}, {1, 2}), 0);
    typist.press(controlKey);
    typist.tap(hKey);
    typist.release(controlKey);
    settle();
    EXPECT_THAT(events,
                ElementsAre(std::pair(HotKeyEvent::pressed, 2U), std::pair(HotKeyEvent::released, 2U)));
}

TEST_F(X11HotKeyServiceTest, KeyThatIsHeldWhileItsCombinationIsUnregisteredSaysNoMore) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    typist.pressModifiers();
    typist.press(hKey);
    ASSERT_TRUE(spinUntil([&] { return !events.empty(); }));
    service->unregisterHotKey(toggleID);
    ASSERT_EQ(service->registerHotKey(toggle, {1, 2}), 0);
    typist.release(hKey);
    typist.releaseModifiers();
    settle();
    EXPECT_THAT(events, ElementsAre(std::pair(HotKeyEvent::pressed, 1U)));
    events.clear();
    typeToggle();
    settle();
    EXPECT_THAT(events,
                ElementsAre(std::pair(HotKeyEvent::pressed, 2U), std::pair(HotKeyEvent::released, 2U)));
}

TEST_F(X11HotKeyServiceTest, RefusedCombinationStaysRefused) {
    const auto other = X11Connection::open();
    std::optional<X11HotKeyService> holder(std::in_place, *other, mainQueue, log,
                                           Platform::HotKeyReach::everywhere);
    ASSERT_EQ(holder->registerHotKey(toggle, {1, 1}), 0);
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), Platform::hotKeyExists);
    holder.reset();
    typeToggle();
    settle();
    EXPECT_THAT(events, IsEmpty()) << "whoever was told so would not expect it";
}

/// Programs that a desktop's keyboard settings run change the keyboard under way.
struct X11KeyboardChangeTest : X11HotKeyServiceTest {
    X11KeyboardChangeTest() { EXPECT_EQ(service->registerHotKey(toggle, toggleID), 0); }
    ~X11KeyboardChangeTest() override { run({"setxkbmap", "us"}); }

    static void run(const std::vector<std::string>& command) {
        EXPECT_TRUE(ChildProcess(command).succeeds()) << command.front();
    }

    static void moveSuperToAnotherModifier() {
        run({"xmodmap", "-e", "clear mod3", "-e", "clear mod4", "-e", "add mod3 = Super_L Super_R"});
    }

    void expectWorks() {
        // What the server said before it said this has been taken in.
        settle();
        typeToggle();
        settle();
        EXPECT_THAT(events, pressedAndReleased);
        events.clear();
    }

    void expectSilence() {
        settle();
        typeToggle();
        settle();
        EXPECT_THAT(events, IsEmpty());
    }
};

TEST_F(X11KeyboardChangeTest, LayoutsMayChange) {
    for (const auto* const layout : {"ru", "fr", "us,ru", "de", "us"}) {
        SCOPED_TRACE(layout);
        run({"setxkbmap", layout});
        expectWorks();
    }
}

TEST_F(X11KeyboardChangeTest, ModifierMayMoveToAnotherBit) {
    moveSuperToAnotherModifier();
    expectWorks();
    run({"setxkbmap", "us"});
    expectWorks();
}

TEST_F(X11KeyboardChangeTest, HotKeyThatIsRegisteredAfterTheChangeWorks) {
    service->unregisterHotKey(toggleID);
    moveSuperToAnotherModifier();
    settle();
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    expectWorks();
}

TEST_F(X11KeyboardChangeTest, KeyboardWithoutTheModifierIsWaitedOut) {
    run({"xmodmap", "-e", "clear mod4"});
    expectSilence();
    EXPECT_THAT(log.lines, ElementsAre(testing::HasSubstr("does not have the shortcut's keys")));
    run({"setxkbmap", "us"});
    expectWorks();
    EXPECT_THAT(log.lines, SizeIs(2));
}

TEST_F(X11KeyboardChangeTest, KeyThatIsHeldWhileTheKeyboardChangesIsReleasedOnce) {
    typist.pressModifiers();
    typist.press(hKey);
    // The server does not change what modifiers are while one of their keys is down.
    typist.releaseModifiers();
    ASSERT_TRUE(spinUntil([&] { return !events.empty(); }));
    moveSuperToAnotherModifier();
    settle();
    EXPECT_THAT(events, ElementsAre(std::pair(HotKeyEvent::pressed, 1U)));
    typist.release(hKey);
    settle();
    EXPECT_THAT(events, pressedAndReleased);
}

TEST_F(X11KeyboardChangeTest, HeldKeyStaysOnePressAfterwards) {
    const KeyRepeats repeats;
    run({"xset", "r", "rate", "50", "50"});
    run({"setxkbmap", "fr"});
    settle();
    typist.pressModifiers();
    typist.press(hKey);
    EXPECT_FALSE(spinUntil([&] { return events.size() > 1; }, std::chrono::milliseconds(250)));
    typist.release(hKey);
    typist.releaseModifiers();
    settle();
    EXPECT_THAT(events, pressedAndReleased);
    run({"xset", "r", "rate"});
}

TEST_F(X11KeyboardChangeTest, CombinationThatAnotherProgramHasGetsAnotherTryWhenTheFocusChanges) {
    X11TestClient other;
    const auto openFocused = [&] {
        const auto window = other.open("a", "A");
        EXPECT_TRUE(spinUntil([&] { return other.activeWindow() == window; }, std::chrono::minutes(1)));
        // Else it may tell of the focus once more.
        TestSupport::waitForManager(other);
    };
    openFocused();
    // What the combination becomes when the modifier moves.
    xcb_grab_key(other.get(), 0, other.root(), XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_3, hKey,
                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    other.sync();
    moveSuperToAnotherModifier();
    expectSilence();
    EXPECT_THAT(log.lines, ElementsAre(testing::HasSubstr("another program holds the shortcut")));
    openFocused();
    expectSilence();
    EXPECT_THAT(log.lines, SizeIs(1)) << "said once";
    xcb_ungrab_key(other.get(), XCB_GRAB_ANY, other.root(), XCB_MOD_MASK_ANY);
    other.sync();
    expectSilence();
    openFocused();
    expectWorks();
    EXPECT_THAT(log.lines, SizeIs(2));
}

TEST_F(X11HotKeyServiceTest, KeyboardOfWhichTheServerTellsNothingHasNoCombinations) {
    const auto other = X11Connection::open();
    ASSERT_EQ(shutdown(xcb_get_file_descriptor(other->get()), SHUT_RDWR), 0);
    X11HotKeyService deaf(*other, mainQueue, log, Platform::HotKeyReach::everywhere);
    constexpr Platform::HotKeyCombination functionKey{96, 0};
    EXPECT_EQ(deaf.registerHotKey(functionKey, toggleID), Platform::hotKeyInvalid);
}

TEST_F(X11HotKeyServiceTest, NothingIsCalledOnceTheServiceIsGone) {
    ASSERT_EQ(service->registerHotKey(toggle, toggleID), 0);
    typeToggle();
    connection->dispatchEvents();
    subscription = {};
    service.reset();
    QCoreApplication::processEvents();
    EXPECT_THAT(events, IsEmpty());
}

/// Combinations of Control and H or J.
struct X11KeysWorld {
    QtPlatform::QtMainQueue mainQueue;
    TestSupport::RecordingLog log;
    std::unique_ptr<X11Connection> connection = X11Connection::open();
    X11HotKeyService service_{*connection, mainQueue, log, Platform::HotKeyReach::everywhere};
    Typist typist;

    Platform::HotKeyService& service() { return service_; }

    void type(const Platform::HotKeyCombination& combination) {
        typist.press(controlKey);
        typist.tap(combination.keyCode == toggle.keyCode ? hKey : jKey);
        typist.release(controlKey);
    }

    /// Events come in order: once those of another combination are here, all earlier ones are.
    void settle() {
        constexpr HotKeyID markerID{1, 99};
        bool isMarkerReleased = false;
        const auto subscription = service_.installEventHandler([&](HotKeyEvent event, HotKeyID id) {
            isMarkerReleased = isMarkerReleased || (id == markerID && event == HotKeyEvent::released);
        });
        EXPECT_EQ(service_.registerHotKey({40, 0}, markerID), 0);
        constexpr xcb_keycode_t kKey = 45;
        typist.tap(kKey);
        EXPECT_TRUE(spinUntil([&] { return isMarkerReleased; }));
        service_.unregisterHotKey(markerID);
    }
};

} // namespace

namespace TestSupport {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, HotKeyServiceContract, X11KeysWorld);

} // namespace TestSupport
