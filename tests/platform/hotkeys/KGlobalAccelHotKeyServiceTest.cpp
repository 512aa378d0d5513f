#include "platform/linux/hotkeys/kglobalaccel/KGlobalAccelHotKeyService.h"

#include "platform/linux/keyboard/XkbKeyboard.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/platform/hotkeys/HotKeyServiceContract.h"
#include "tests/support/EventLoop.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace TestSupport {
namespace {

using LinuxPlatform::KGlobalAccelHotKeyService;
using Platform::HotKeyEvent;
using Platform::HotKeyID;

/// X key codes of a PC keyboard.
constexpr xcb_keycode_t controlKey = 37;
constexpr xcb_keycode_t altKey = 64;
constexpr xcb_keycode_t superKey = 133;
constexpr xcb_keycode_t hKey = 43;
constexpr xcb_keycode_t jKey = 44;
constexpr std::chrono::seconds patience{30};

/// Types on the keyboard of the screen that KWin's window stands on.
class ScreenTypist {
public:
    void press(xcb_keycode_t key) { send(XCB_KEY_PRESS, key); }
    void release(xcb_keycode_t key) { send(XCB_KEY_RELEASE, key); }
    void type(std::initializer_list<xcb_keycode_t> keys) {
        for (const auto key : keys) {
            press(key);
        }
        for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
            release(*key);
        }
    }

private:
    void send(std::uint8_t type, xcb_keycode_t key) {
        xcb_test_fake_input(screen_.get(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        xcb_flush(screen_.get());
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> screen_{
        xcb_connect(std::getenv("VIRTUAL_DESKTOP_SCREEN"), nullptr), &xcb_disconnect};
};

/// A real KWin.
struct KGlobalAccelWorld {
    QtPlatform::QtMainQueue mainQueue;
    std::unique_ptr<LinuxPlatform::X11Connection> connection = LinuxPlatform::X11Connection::open();
    LinuxPlatform::XkbKeyboard keyboard{connection.get(), "KDE"};
    KGlobalAccelHotKeyService keys{QDBusConnection::sessionBus(),
                                   mainQueue,
                                   [this](std::int64_t code) { return keyboard.symbols(code); },
                                   {.grant = patience, .other = patience}};
    ScreenTypist typist;
    int markers = 0;
    Platform::Subscription subscription = keys.installEventHandler([this](HotKeyEvent event, HotKeyID id) {
        markers += event == HotKeyEvent::released && id == markerID ? 1 : 0;
    });

    // The toolkit keeps back what comes from the bus before the first turn of the event loop, and hands it
    // over after what comes then.
    KGlobalAccelWorld() { QCoreApplication::processEvents(); }

    static constexpr HotKeyID markerID{1, 99};
    static constexpr Platform::HotKeyCombination marker{38, 4096 + 2048};

    Platform::HotKeyService& service() { return keys; }
    void type(const Platform::HotKeyCombination& combination) {
        typist.type({controlKey, combination.keyCode == 4 ? hKey : jKey});
    }
    /// Events come in order: once those of another combination are here, all earlier ones are.
    void settle() {
        ASSERT_EQ(keys.registerHotKey(marker, markerID), 0);
        markers = 0;
        typist.type({controlKey, altKey, jKey});
        EXPECT_TRUE(spinUntil([&] { return markers == 1; }));
        keys.unregisterHotKey(markerID);
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(KGlobalAccel, HotKeyServiceContract, KGlobalAccelWorld);

struct KGlobalAccelTest : testing::Test {
    static constexpr Platform::HotKeyCombination toggle{4, 6400};
    static constexpr HotKeyID toggleID{0x53534B53, 1};

    KGlobalAccelWorld world;
    std::vector<HotKeyEvent> events;
    Platform::Subscription subscription =
        world.keys.installEventHandler([this](HotKeyEvent event, HotKeyID id) {
            if (id == toggleID) {
                events.push_back(event);
            }
        });

    static QVariantList ask(const QString& method, const QVariantList& arguments) {
        auto call = QDBusMessage::createMethodCall(QStringLiteral("org.kde.kglobalaccel"),
                                                   QStringLiteral("/kglobalaccel"),
                                                   QStringLiteral("org.kde.KGlobalAccel"), method);
        call.setArguments(arguments);
        return QDBusConnection::sessionBus().call(call).arguments();
    }
    /// Who has a combination in the numbers of Qt, as the service itself says.
    static QStringList ownerOf(int key) {
        return ask(QStringLiteral("action"), {key}).value(0).toStringList();
    }
    static constexpr int toggleKey = 0x04000000 | 0x08000000 | 0x10000000 | 'H';
};

TEST_F(KGlobalAccelTest, IsThere) {
    EXPECT_TRUE(KGlobalAccelHotKeyService::isThere(QDBusConnection::sessionBus(), {patience, patience}));
    EXPECT_FALSE(KGlobalAccelHotKeyService::isThere(QDBusConnection(QStringLiteral("none")), {}));
    EXPECT_EQ(world.keys.reach(), Platform::HotKeyReach::everywhere);
}

TEST_F(KGlobalAccelTest, AHeldKeyIsPressedOnceHoweverItIsLetGo) {
    ASSERT_EQ(world.keys.registerHotKey(toggle, toggleID), 0);
    for (const auto key : {controlKey, altKey, superKey, hKey}) {
        world.typist.press(key);
    }
    ASSERT_TRUE(spinUntil([&] { return !events.empty(); }));
    // The modifiers first.
    for (const auto key : {controlKey, altKey, superKey, hKey}) {
        world.typist.release(key);
    }
    world.settle();
    EXPECT_THAT(events, testing::ElementsAre(HotKeyEvent::pressed, HotKeyEvent::released));
}

TEST_F(KGlobalAccelTest, WhatAnotherProgramHasIsRefused) {
    ASSERT_EQ(world.keys.registerHotKey({4, 4096 + 512}, toggleID), 0);
    // Of KWin's own: a list of windows.
    EXPECT_EQ(world.keys.registerHotKey({48, 2048}, {1, 2}), Platform::hotKeyExists);
    EXPECT_EQ(world.keys.registerHotKey({0x7FFF, 4096}, {1, 3}), Platform::hotKeyInvalid);
}

TEST_F(KGlobalAccelTest, OneCombinationMayServeTwice) {
    ASSERT_EQ(world.keys.registerHotKey(toggle, toggleID), 0);
    ASSERT_EQ(world.keys.registerHotKey(toggle, {1, 2}), 0);
    world.keys.unregisterHotKey({1, 2});
    world.typist.type({controlKey, altKey, superKey, hKey});
    world.settle();
    EXPECT_THAT(events, testing::ElementsAre(HotKeyEvent::pressed, HotKeyEvent::released));
}

TEST_F(KGlobalAccelTest, WhatAKilledRunHasLeftIsNotInTheWay) {
    const QStringList left{QStringLiteral("curtain"), QStringLiteral("left"), QStringLiteral("Curtain"),
                           QStringLiteral("Curtain")};
    ask(QStringLiteral("doRegister"), {left});
    ask(QStringLiteral("setShortcut"), {left, QVariant::fromValue(QList<int>{toggleKey}), 2U | 4U});
    ASSERT_EQ(ownerOf(toggleKey).value(1), left[1]);
    EXPECT_EQ(world.keys.registerHotKey(toggle, toggleID), 0);
    const auto owner = ownerOf(toggleKey);
    EXPECT_EQ(owner.value(0), left[0]);
    EXPECT_NE(owner.value(1), left[1]);
}

TEST_F(KGlobalAccelTest, NothingIsLeftAtTheEnd) {
    {
        KGlobalAccelWorld ending;
        ASSERT_EQ(ending.keys.registerHotKey(toggle, toggleID), 0);
        EXPECT_EQ(ownerOf(toggleKey).value(0), QStringLiteral("curtain"));
    }
    EXPECT_TRUE(ownerOf(toggleKey).isEmpty()) << ownerOf(toggleKey).join(' ').toStdString();
}

} // namespace
} // namespace TestSupport
