#include "hotkeys/KeyboardShortcuts.h"

#include "tests/support/FakeHotKeyService.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

namespace {

using KeyboardShortcuts::Name;
using KeyboardShortcuts::Shortcut;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeHotKeyService;
using TestSupport::MemoryUserDefaults;
using TestSupport::RecordingLog;

constexpr Shortcut defaultShortcut{4, 6400};
constexpr Shortcut otherShortcut{0, 256};
constexpr auto key = "KeyboardShortcuts_toggle";

struct KeyboardShortcutsTest : testing::Test {
    MemoryUserDefaults defaults;
    FakeHotKeyService service;
    RecordingLog log;
    KeyboardShortcuts::KeyboardShortcuts shortcuts{defaults, service, log};
    int calls = 0;

    Name toggle() { return shortcuts.name("toggle", defaultShortcut); }
    Platform::Subscription listen(const Name& name) {
        return shortcuts.onKeyUp(name, [this] { ++calls; });
    }
};

TEST_F(KeyboardShortcutsTest, FirstUseWritesTheDefault) {
    toggle();
    EXPECT_EQ(defaults.values.at(key), R"({"carbonKeyCode":4,"carbonModifiers":6400})");
    EXPECT_THAT(service.calls, IsEmpty());
}

TEST_F(KeyboardShortcutsTest, NameWithoutDefaultWritesNothing) {
    shortcuts.name("toggle");
    EXPECT_THAT(defaults.values, IsEmpty());
}

TEST_F(KeyboardShortcutsTest, AnEntryOfTheUserIsNotReplaced) {
    for (const auto* entry : {R"({"carbonKeyCode":0,"carbonModifiers":256})", "false", "corrupt"}) {
        defaults.values[key] = entry;
        toggle();
        EXPECT_EQ(defaults.values[key], entry);
    }
}

TEST_F(KeyboardShortcutsTest, ListeningRegistersTheStoredShortcut) {
    const auto subscription = listen(toggle());
    EXPECT_THAT(service.calls, ElementsAre("register 4/6400 as 1"));
    EXPECT_EQ(service.registrations.at(0).id, (Platform::HotKeyID{0x53534B53, 1}));
    EXPECT_EQ(service.handlersInstalled, 1);
}

TEST_F(KeyboardShortcutsTest, ActionRunsOnceOnRelease) {
    const auto subscription = listen(toggle());
    service.press();
    EXPECT_EQ(calls, 0);
    service.release();
    EXPECT_EQ(calls, 1);
}

TEST_F(KeyboardShortcutsTest, EventsOfOthersAreIgnored) {
    const auto subscription = listen(toggle());
    service.send(Platform::HotKeyEvent::released, {0x53534B53, 7});
    service.send(Platform::HotKeyEvent::released, {0x12345678, 1});
    EXPECT_EQ(calls, 0);
}

TEST_F(KeyboardShortcutsTest, NothingIsCalledAfterTheSubscriptionEnded) {
    { const auto subscription = listen(toggle()); }
    service.release();
    EXPECT_EQ(calls, 0);
}

TEST_F(KeyboardShortcutsTest, SettingReplacesTheRegistrationAtOnce) {
    const auto name = toggle();
    const auto subscription = listen(name);
    shortcuts.setShortcut(otherShortcut, name);
    EXPECT_THAT(service.calls, ElementsAre("register 4/6400 as 1", "unregister 1", "register 0/256 as 2"));
    EXPECT_EQ(service.handlersInstalled, 1);
    EXPECT_EQ(shortcuts.getShortcut(name), otherShortcut);
    service.release();
    EXPECT_EQ(calls, 1);
}

TEST_F(KeyboardShortcutsTest, AChangeIsStoredThenRegisteredThenAnnounced) {
    const auto name = toggle();
    const auto subscription = listen(name);
    std::vector<std::string> events;
    service.onRegister = [&] {
        events.emplace_back(shortcuts.getShortcut(name) == otherShortcut ? "stored and registering"
                                                                         : "registering");
    };
    const auto observer = shortcuts.observeShortcutByNameDidChange([&](const auto&) {
        events.emplace_back(service.calls.back() == "register 0/256 as 2" ? "announced" : "announced early");
    });
    shortcuts.setShortcut(otherShortcut, name);
    EXPECT_THAT(events, ElementsAre("stored and registering", "announced"));
}

TEST_F(KeyboardShortcutsTest, AClearedShortcutIsStoredThenUnregisteredThenAnnounced) {
    const auto name = toggle();
    const auto subscription = listen(name);
    std::vector<std::string> events;
    service.onUnregister = [&] {
        events.emplace_back(shortcuts.getShortcut(name) ? "unregistering" : "stored and unregistering");
    };
    const auto observer = shortcuts.observeShortcutByNameDidChange([&](const auto&) {
        events.emplace_back(service.registrations.empty() ? "announced" : "announced early");
    });
    shortcuts.setShortcut(std::nullopt, name);
    EXPECT_THAT(events, ElementsAre("stored and unregistering", "announced"));
}

TEST_F(KeyboardShortcutsTest, SettingTheSameShortcutAgainRegistersItAnew) {
    const auto name = toggle();
    const auto subscription = listen(name);
    int announcements = 0;
    const auto observer = shortcuts.observeShortcutByNameDidChange([&](const auto&) { ++announcements; });
    const int writes = defaults.writes;
    shortcuts.setShortcut(defaultShortcut, name);
    EXPECT_EQ(defaults.writes, writes + 1);
    EXPECT_THAT(service.calls, ElementsAre("register 4/6400 as 1", "unregister 1", "register 4/6400 as 2"));
    EXPECT_EQ(announcements, 1);
}

TEST_F(KeyboardShortcutsTest, ARefusedRegistrationUsesUpItsIdentifier) {
    service.status = Platform::hotKeyExists;
    const auto name = toggle();
    const auto subscription = listen(name);
    service.status = 0;
    shortcuts.setShortcut(otherShortcut, name);
    EXPECT_THAT(service.calls, ElementsAre("register 4/6400 as 1", "register 0/256 as 2"));
}

TEST_F(KeyboardShortcutsTest, ClearingADefaultStoresFalseAndLastsBeyondTheNextLaunch) {
    const auto name = toggle();
    const auto subscription = listen(name);
    shortcuts.setShortcut(std::nullopt, name);
    EXPECT_EQ(defaults.values[key], "false");
    EXPECT_EQ(shortcuts.getShortcut(name), std::nullopt);
    EXPECT_THAT(service.registrations, IsEmpty());

    KeyboardShortcuts::KeyboardShortcuts nextLaunch(defaults, service, log);
    service.calls.clear();
    const auto again = nextLaunch.onKeyUp(nextLaunch.name("toggle", defaultShortcut), [] {});
    EXPECT_EQ(defaults.values[key], "false");
    EXPECT_THAT(service.calls, IsEmpty());
}

TEST_F(KeyboardShortcutsTest, ClearingWithoutADefaultRemovesTheEntry) {
    const auto name = shortcuts.name("toggle");
    shortcuts.setShortcut(otherShortcut, name);
    shortcuts.setShortcut(std::nullopt, name);
    EXPECT_THAT(defaults.values, IsEmpty());
}

TEST_F(KeyboardShortcutsTest, ClearingNothingChangesAndAnnouncesNothing) {
    const auto name = shortcuts.name("toggle");
    int announcements = 0;
    const auto subscription = shortcuts.observeShortcutByNameDidChange([&](const auto&) { ++announcements; });
    shortcuts.setShortcut(std::nullopt, name);
    EXPECT_EQ(defaults.writes, 0);
    EXPECT_EQ(announcements, 0);
}

TEST_F(KeyboardShortcutsTest, ASetShortcutCanFollowAClearedOne) {
    const auto name = toggle();
    const auto subscription = listen(name);
    shortcuts.setShortcut(std::nullopt, name);
    shortcuts.setShortcut(otherShortcut, name);
    ASSERT_EQ(service.registrations.size(), 1U);
    service.release();
    EXPECT_EQ(calls, 1);
}

TEST_F(KeyboardShortcutsTest, EachChangeIsAnnouncedWithItsName) {
    const auto name = toggle();
    std::vector<std::string> announced;
    const auto subscription =
        shortcuts.observeShortcutByNameDidChange([&](const KeyboardShortcuts::Notification& notification) {
            EXPECT_EQ(notification.name, "KeyboardShortcuts_shortcutByNameDidChange");
            announced.push_back(notification.userInfo.at("name").rawValue);
        });
    shortcuts.setShortcut(otherShortcut, name);
    shortcuts.setShortcut(std::nullopt, name);
    EXPECT_THAT(announced, ElementsAre("toggle", "toggle"));
}

TEST_F(KeyboardShortcutsTest, ShortcutWithoutListenerIsStoredButNotRegistered) {
    const auto name = toggle();
    shortcuts.setShortcut(otherShortcut, name);
    EXPECT_THAT(service.calls, IsEmpty());
}

TEST_F(KeyboardShortcutsTest, RefusedCombinationIsSaidAndStaysStoredButInactive) {
    service.status = Platform::hotKeyExists;
    const auto name = toggle();
    const auto subscription = listen(name);
    EXPECT_THAT(log.lines, ElementsAre("Error registering hotkey Ctrl+Alt+Super+H: -9878"));
    EXPECT_EQ(shortcuts.getShortcut(name), defaultShortcut);
    EXPECT_EQ(service.handlersInstalled, 0);

    service.status = 0;
    shortcuts.setShortcut(otherShortcut, name);
    EXPECT_THAT(service.registrations, testing::SizeIs(1));
    EXPECT_THAT(log.lines, testing::SizeIs(1));
}

TEST_F(KeyboardShortcutsTest, CorruptEntryRegistersNothing) {
    defaults.values[key] = "{";
    const auto subscription = listen(toggle());
    EXPECT_THAT(service.calls, IsEmpty());
    EXPECT_EQ(shortcuts.getShortcut(toggle()), std::nullopt);
}

TEST_F(KeyboardShortcutsTest, TwoListenersShareOneRegistration) {
    const auto name = toggle();
    const auto first = listen(name);
    const auto second = listen(name);
    EXPECT_EQ(service.registrations.size(), 1U);
    service.release();
    EXPECT_EQ(calls, 2);
}

TEST_F(KeyboardShortcutsTest, NamesThatShareAShortcutDoNotTakeItFromEachOther) {
    const auto first = toggle();
    const auto second = shortcuts.name("other", defaultShortcut);
    const auto firstListener = listen(first);
    const auto secondListener = listen(second);
    service.release();
    EXPECT_EQ(calls, 2);
    shortcuts.setShortcut(std::nullopt, first);
    ASSERT_EQ(service.registrations.size(), 1U);
    service.release();
    EXPECT_EQ(calls, 3);
}

TEST_F(KeyboardShortcutsTest, AListenerMayChangeTheShortcutWhileItIsCalled) {
    const auto name = toggle();
    const auto subscription = shortcuts.onKeyUp(name, [&] { shortcuts.setShortcut(otherShortcut, name); });
    service.release();
    EXPECT_EQ(service.registrations.at(0).combination.keyCode, 0);
}

TEST_F(KeyboardShortcutsTest, RegistrationsEndWithTheObject) {
    {
        KeyboardShortcuts::KeyboardShortcuts local(defaults, service, log);
        const auto subscription = local.onKeyUp(local.name("toggle", defaultShortcut), [] {});
        EXPECT_EQ(service.registrations.size(), 1U);
    }
    EXPECT_THAT(service.registrations, IsEmpty());
}

} // namespace
