#include "platform/linux/hotkeys/gnome/GnomeHotKeyService.h"

#include "platform/qt/QtMainQueue.h"
#include "tests/platform/dbus/BusQuestion.h"
#include "tests/platform/gnome/GnomeShellStandIn.h"
#include "tests/platform/hotkeys/HotKeyServiceContract.h"
#include "tests/support/FakeHotKeyService.h"
#include "tests/support/RecordingLog.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace TestSupport {
namespace {

using LinuxPlatform::GnomeHotKeyService;
using Platform::HotKeyEvent;
using Platform::HotKeyID;
using Platform::HotKeyReach;

const auto curtainName = QStringLiteral("com.curtain.Curtain");
constexpr unsigned control = 4;
constexpr std::chrono::seconds patience{30};

/// A keyboard on which every key but one has a number.
std::optional<std::uint32_t> scanCodeOf(std::int64_t keyCode) {
    return keyCode == 200 ? std::nullopt : std::optional(static_cast<std::uint32_t>(keyCode) + 8);
}

struct GnomeHotKeyWorld {
    GnomeShellStandIn shell;
    QDBusConnection bus = shell.connect();
    QtPlatform::QtMainQueue queue;
    RecordingLog log;
    FakeHotKeyService* x11 = nullptr;
    std::unique_ptr<GnomeHotKeyService> keys;

    explicit GnomeHotKeyWorld(bool isOn = true) {
        EXPECT_TRUE(bus.registerService(curtainName));
        if (isOn) {
            shell.setExtension(GnomeShellStandIn::on);
        }
        make();
        if (isOn) {
            EXPECT_TRUE(comesTo(HotKeyReach::everywhere));
        }
    }

    void make() {
        auto standIn = std::make_unique<FakeHotKeyService>();
        x11 = standIn.get();
        x11->heard = HotKeyReach::inX11WindowsOnly;
        keys =
            std::make_unique<GnomeHotKeyService>(bus, queue, log, scanCodeOf, std::move(standIn), patience);
    }

    bool comesTo(HotKeyReach reach) {
        return spinUntil([&] { return keys->reach() == reach; });
    }
    unsigned grabbed() const { return shell.call(QStringLiteral("GrabbedKeys")).toUInt(); }
    bool comesToGrab(unsigned count) {
        return spinUntil([&] { return grabbed() == count; });
    }

    Platform::HotKeyService& service() { return *keys; }
    void type(const Platform::HotKeyCombination& combination) const {
        shell.call(QStringLiteral("StrikeKey"), {*scanCodeOf(combination.keyCode), control});
    }
    /// What the shell has sent is here when it answers on the same connection; then the queue tells of it.
    void settle() {
        askOverBus(bus, QDBusMessage::createMethodCall(
                            QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
                            QStringLiteral("com.curtain.Test.Shell"), QStringLiteral("GrabbedKeys")));
        bool isDone = false;
        queue.async([&] { isDone = true; });
        EXPECT_TRUE(spinUntil([&] { return isDone; }));
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Gnome, HotKeyServiceContract, GnomeHotKeyWorld);

struct GnomeHotKeyTest : testing::Test {
    static constexpr Platform::HotKeyCombination controlH{4, 4096};
    static constexpr HotKeyID toggle{0x53534B53, 1};
    static constexpr HotKeyID other{0x53534B53, 2};

    GnomeHotKeyWorld world{false};
    std::vector<std::pair<HotKeyEvent, HotKeyID>> events;
    Platform::Subscription subscription = listen();

    Platform::Subscription listen() {
        return world.keys->installEventHandler(
            [this](HotKeyEvent event, HotKeyID id) { events.emplace_back(event, id); });
    }

    void switchOn() {
        world.shell.setExtension(GnomeShellStandIn::on);
        ASSERT_TRUE(world.comesTo(HotKeyReach::everywhere));
    }
    void switchOff() {
        world.shell.setExtension(GnomeShellStandIn::off);
        ASSERT_TRUE(world.comesTo(HotKeyReach::inX11WindowsOnly));
    }
};

TEST_F(GnomeHotKeyTest, WhatSomebodyElseHasIsRefused) {
    switchOn();
    world.shell.call(QStringLiteral("TakeKey"), {12U, control});
    EXPECT_EQ(world.keys->registerHotKey(controlH, toggle), Platform::hotKeyExists);
    world.type(controlH);
    world.settle();
    EXPECT_THAT(events, testing::IsEmpty());
    EXPECT_EQ(world.keys->registerHotKey({200, 4096}, toggle), Platform::hotKeyInvalid);
}

TEST_F(GnomeHotKeyTest, OneCombinationMayHaveTwoHotKeys) {
    switchOn();
    ASSERT_EQ(world.keys->registerHotKey(controlH, toggle), 0);
    ASSERT_EQ(world.keys->registerHotKey(controlH, other), 0);
    world.keys->unregisterHotKey(toggle);
    world.settle();
    world.type(controlH);
    world.settle();
    EXPECT_THAT(events, testing::ElementsAre(std::pair(HotKeyEvent::pressed, other),
                                             std::pair(HotKeyEvent::released, other)));
    world.keys->unregisterHotKey(other);
    EXPECT_TRUE(world.comesToGrab(0));
}

TEST_F(GnomeHotKeyTest, TheXServerHasThemWhileTheExtensionDoesNotAnswer) {
    ASSERT_EQ(world.keys->registerHotKey(controlH, toggle), 0);
    EXPECT_EQ(world.keys->reach(), HotKeyReach::inX11WindowsOnly);
    EXPECT_EQ(world.x11->registrations.size(), 1U);
    switchOn();
    EXPECT_TRUE(world.comesToGrab(1));
    EXPECT_TRUE(spinUntil([&] { return world.x11->registrations.empty(); }));
    switchOff();
    EXPECT_EQ(world.x11->registrations.size(), 1U);
    switchOn();
    EXPECT_TRUE(world.comesToGrab(1));
    EXPECT_EQ(world.log.lines.size(), 0U);
}

TEST_F(GnomeHotKeyTest, SaysThatTheShellDoesNotGrantWhatWasThereBefore) {
    ASSERT_EQ(world.keys->registerHotKey(controlH, toggle), 0);
    world.shell.call(QStringLiteral("TakeKey"), {12U, control});
    switchOn();
    EXPECT_TRUE(spinUntil([&] { return !world.log.lines.empty(); }));
    EXPECT_EQ(world.x11->registrations.size(), 1U);
}

TEST_F(GnomeHotKeyTest, AnExtensionFromBeforeLeavesThemToTheXServer) {
    switchOn();
    world.shell.call(QStringLiteral("LoseKeys"));
    EXPECT_EQ(world.keys->registerHotKey(controlH, toggle), 0);
    EXPECT_EQ(world.keys->reach(), HotKeyReach::inX11WindowsOnly);
    EXPECT_EQ(world.x11->registrations.size(), 1U);
    switchOff();
    switchOn();
    EXPECT_TRUE(world.comesToGrab(1));
}

TEST_F(GnomeHotKeyTest, KeysAreFreeWhenCurtainIsGone) {
    switchOn();
    ASSERT_EQ(world.keys->registerHotKey(controlH, toggle), 0);
    world.keys.reset();
    EXPECT_TRUE(world.comesToGrab(0));
    world.make();
    ASSERT_TRUE(world.comesTo(HotKeyReach::everywhere));
    ASSERT_EQ(world.keys->registerHotKey(controlH, toggle), 0);
    EXPECT_EQ(world.grabbed(), 1U);
    // As after a crash.
    ASSERT_TRUE(world.bus.unregisterService(curtainName));
    EXPECT_TRUE(world.comesToGrab(0));
}

TEST_F(GnomeHotKeyTest, NobodyElseGrabsOrTellsOfKeys) {
    switchOn();
    ASSERT_EQ(world.keys->registerHotKey(controlH, toggle), 0);
    auto stranger = world.shell.connect();
    auto request = QDBusMessage::createMethodCall(
        QStringLiteral("com.curtain.Curtain.GnomeShell"), QStringLiteral("/com/curtain/Curtain/GnomeShell"),
        QStringLiteral("com.curtain.Curtain.GnomeShell"), QStringLiteral("GrabKey"));
    request.setArguments({50U, control});
    EXPECT_EQ(askOverBus(stranger, request).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
    EXPECT_EQ(world.grabbed(), 1U);
    auto told =
        QDBusMessage::createSignal(QStringLiteral("/com/curtain/Curtain/GnomeShell"),
                                   QStringLiteral("com.curtain.Curtain.GnomeShell"), QStringLiteral("Key"));
    told.setArguments({12U, control, true});
    ASSERT_TRUE(stranger.send(told));
    // The bus has passed it on before it answers what is asked after it.
    ASSERT_TRUE(stranger.interface()->isServiceRegistered(QStringLiteral("com.curtain.Curtain")).isValid());
    world.type(controlH);
    world.settle();
    EXPECT_EQ(events.size(), 2U);
}

} // namespace
} // namespace TestSupport
