#include "Curtain/HotkeyManager.h"

#include "tests/support/FakeHotKeyService.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using TestSupport::FakeHotKeyService;
using TestSupport::MemoryUserDefaults;
using TestSupport::RecordingLog;

constexpr auto key = "KeyboardShortcuts_togglePrivacy";

struct HotkeyManagerTest : testing::Test {
    MemoryUserDefaults defaults;
    FakeHotKeyService service;
    RecordingLog log;
    KeyboardShortcuts::KeyboardShortcuts shortcuts{defaults, service, log};
    std::unique_ptr<Curtain::HotkeyManager> manager = std::make_unique<Curtain::HotkeyManager>(shortcuts);
    int toggles = 0;

    void start() {
        manager->onToggle = [this] { ++toggles; };
        manager->start();
    }
};

TEST_F(HotkeyManagerTest, NothingIsWrittenBeforeTheStart) {
    EXPECT_FALSE(defaults.contains(key));
}

TEST_F(HotkeyManagerTest, FirstLaunchStoresAndRegistersTheDefault) {
    start();
    EXPECT_EQ(KeyboardShortcuts::decodeShortcut(defaults.values.at(key)),
              (KeyboardShortcuts::Shortcut{4, 6400}));
    ASSERT_EQ(service.registrations.size(), 1U);
    EXPECT_EQ(service.registrations[0].combination.keyCode, 4);
    EXPECT_EQ(service.registrations[0].combination.modifiers, 6400);
}

TEST_F(HotkeyManagerTest, PressAndReleaseToggleOnceOnRelease) {
    start();
    service.press();
    EXPECT_EQ(toggles, 0);
    service.release();
    EXPECT_EQ(toggles, 1);
}

TEST_F(HotkeyManagerTest, ClearedShortcutStaysCleared) {
    defaults.values[key] = "false";
    start();
    EXPECT_EQ(defaults.values[key], "false");
    EXPECT_TRUE(service.registrations.empty());
}

TEST_F(HotkeyManagerTest, ReleaseAfterTheManagerIsGoneDoesNothing) {
    start();
    manager.reset();
    service.release();
    EXPECT_EQ(toggles, 0);
}

TEST_F(HotkeyManagerTest, WithoutACallbackNothingHappens) {
    manager->start();
    service.release();
}

} // namespace
