#include "platform/linux/hotkeys/sway/SwayHotKeyService.h"

#include "platform/linux/i3/I3Connection.h"
#include "platform/linux/keyboard/XkbKeyboard.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/platform/hotkeys/HotKeyServiceContract.h"
#include "tests/platform/i3/I3Desktop.h"
#include "tests/support/EventLoop.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/X11TestClient.h"

#include <xcb/xtest.h>

#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {
namespace {

using LinuxPlatform::I3Event;
using LinuxPlatform::I3Request;
using LinuxPlatform::SwayHotKeyService;
using Platform::HotKeyCombination;
using Platform::HotKeyEvent;
using PlatformTests::I3Desktop;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// X key codes of a PC keyboard.
constexpr xcb_keycode_t controlKey = 37;
constexpr xcb_keycode_t altKey = 64;
constexpr xcb_keycode_t capsLockKey = 66;
constexpr xcb_keycode_t numLockKey = 77;
constexpr xcb_keycode_t hKey = 43;
constexpr xcb_keycode_t jKey = 44;

/// However long the machine stalls, sway answers.
constexpr std::chrono::seconds patience{30};

constexpr std::int64_t virtualH = 4;
constexpr HotKeyCombination controlH{virtualH, Platform::HotKeyModifier::control};
constexpr HotKeyCombination controlJ{38, Platform::HotKeyModifier::control};
constexpr HotKeyCombination altJ{38, Platform::HotKeyModifier::option};

/// What runs of sway's bindings, as another program hears it.
class BindingWatch {
public:
    explicit BindingWatch(Platform::MainQueue& queue)
        : connection_(I3Desktop::socket(), queue, {"binding", "workspace"},
                      {nullptr, nullptr, [this](I3Event event, const QByteArray& payload) {
                           note(event, QJsonDocument::fromJson(payload).object());
                       }}) {
        connection_.open();
        connection_.finish(patience);
    }

    std::vector<std::string> commands;
    int reloads = 0;

private:
    void note(I3Event event, const QJsonObject& object) {
        if (event == I3Event::binding) {
            const auto binding = object.value(QLatin1String("binding")).toObject();
            commands.push_back(binding.value(QLatin1String("command")).toString().toStdString());
        } else if (object.value(QLatin1String("change")).toString() == QLatin1String("reload")) {
            ++reloads;
        }
    }

    LinuxPlatform::I3Connection connection_;
};

/// sway with the service, and a hand on the keyboard of the screen that it stands on.
class SwayKeysWorld {
public:
    SwayKeysWorld() { start(); }
    ~SwayKeysWorld() {
        service_.reset();
        if (configuration() != ownConfiguration_) {
            configure("");
        }
    }
    SwayKeysWorld(const SwayKeysWorld&) = delete;
    SwayKeysWorld& operator=(const SwayKeysWorld&) = delete;

    void start() {
        service_.reset();
        service_.emplace(
            I3Desktop::socket(), queue_, log,
            SwayHotKeyService::Keys{[this](std::int64_t keyCode) {
                                        return missingKey == keyCode ? std::optional(noSuchKey)
                                                                     : keyboard_.scanCodeOf(keyCode);
                                    },
                                    [this](std::int64_t keyCode) { return keyboard_.symbols(keyCode); }},
            LinuxPlatform::EarlierValue(state, "bound", "session"),
            SwayHotKeyService::Patience{.start = patience, .bind = patience, .end = patience});
        EXPECT_TRUE(spinUntil([this] { return service_->reach() == Platform::HotKeyReach::everywhere; }));
        markers_ = service_->installEventHandler([this](HotKeyEvent event, Platform::HotKeyID id) {
            isMarkerHeard_ = isMarkerHeard_ || (event == HotKeyEvent::released && id == markerID);
        });
    }
    void end() { service_.reset(); }
    SwayHotKeyService& service() { return *service_; }

    void type(const HotKeyCombination& combination) {
        const bool isControl = combination.modifiers == Platform::HotKeyModifier::control;
        const auto modifier = isControl ? controlKey : altKey;
        send(XCB_KEY_PRESS, modifier);
        tap(combination.keyCode == virtualH ? hKey : jKey);
        send(XCB_KEY_RELEASE, modifier);
    }

    void tap(xcb_keycode_t key) {
        send(XCB_KEY_PRESS, key);
        send(XCB_KEY_RELEASE, key);
    }

    void send(std::uint8_t type, xcb_keycode_t key) {
        xcb_test_fake_input(hand_.get(), type, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
        hand_.sync();
    }

    /// Bindings are told in order.
    void settle() {
        isMarkerHeard_ = false;
        ASSERT_EQ(service_->registerHotKey(altJ, markerID), 0);
        type(altJ);
        ASSERT_TRUE(spinUntil([this] { return isMarkerHeard_; }));
        service_->unregisterHotKey(markerID);
        ASSERT_TRUE(spinUntil(
            [this] { return !watch.commands.empty() && watch.commands.back().ends_with("Mod1+44"); }));
        watch.commands.pop_back();
    }

    /// Has sway read its configuration with these lines at the end.
    void configure(const std::string& lines) {
        std::ofstream(path()) << ownConfiguration_ << lines;
        const auto before = watch.reloads;
        I3Desktop::run("reload");
        ASSERT_TRUE(spinUntil([&] { return watch.reloads > before; }));
    }

    /// What sway says when a binding is to be taken away that is not there, or is.
    static bool takeAway(const std::string& binding) {
        return !I3Desktop::ask(I3Request::runCommand, "unbindcode --release " + binding)
                    .contains("Could not find binding");
    }

    RecordingLog log;
    MemoryUserDefaults state;
    std::optional<std::int64_t> missingKey;

private:
    static constexpr Platform::HotKeyID markerID{1, 99};
    static constexpr std::uint32_t noSuchKey = XKB_KEYCODE_INVALID;

    static std::filesystem::path path() {
        return std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) / "sway" / "config";
    }
    static std::string configuration() {
        std::ostringstream text;
        text << std::ifstream(path()).rdbuf();
        return text.str();
    }

    QtPlatform::QtMainQueue queue_;
    std::unique_ptr<LinuxPlatform::X11Connection> x11_ = LinuxPlatform::X11Connection::open();
    LinuxPlatform::XkbKeyboard keyboard_{x11_.get(), "sway"};
    X11TestClient hand_{std::getenv("VIRTUAL_DESKTOP_SCREEN")};
    std::string ownConfiguration_ = configuration();
    std::optional<SwayHotKeyService> service_;
    Platform::Subscription markers_;
    bool isMarkerHeard_ = false;

public:
    BindingWatch watch{queue_};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Sway, HotKeyServiceContract, SwayKeysWorld);

struct SwayHotKeyServiceTest : testing::Test {
    SwayKeysWorld world;
    std::vector<std::pair<HotKeyEvent, std::uint32_t>> events;
    Platform::Subscription subscription;

    void follow() {
        subscription = world.service().installEventHandler([this](HotKeyEvent event, Platform::HotKeyID id) {
            if (id.id < 99) {
                events.emplace_back(event, id.id);
            }
        });
    }
};

TEST_F(SwayHotKeyServiceTest, IsHeardWithTheFocusAnywhere) {
    EXPECT_EQ(world.service().reach(), Platform::HotKeyReach::everywhere);
    EXPECT_FALSE(world.service().canTakeKeyboard());
}

TEST_F(SwayHotKeyServiceTest, WorksWhateverLocksAreOn) {
    follow();
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 1}), 0);
    for (const auto lock : {capsLockKey, numLockKey}) {
        world.tap(lock);
        world.type(controlH);
        world.settle();
        world.tap(lock);
        EXPECT_THAT(events,
                    ElementsAre(std::pair(HotKeyEvent::pressed, 1U), std::pair(HotKeyEvent::released, 1U)));
        events.clear();
    }
}

TEST_F(SwayHotKeyServiceTest, TheModifierMayBeLetGoFirst) {
    follow();
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 1}), 0);
    world.send(XCB_KEY_PRESS, controlKey);
    world.send(XCB_KEY_PRESS, hKey);
    world.send(XCB_KEY_RELEASE, controlKey);
    world.send(XCB_KEY_RELEASE, hKey);
    world.settle();
    EXPECT_THAT(events,
                ElementsAre(std::pair(HotKeyEvent::pressed, 1U), std::pair(HotKeyEvent::released, 1U)));
}

TEST_F(SwayHotKeyServiceTest, WhatItsUserHasBoundIsRefusedAndStays) {
    world.configure("bindsym Ctrl+h nop mine\nset $j 44\nbindcode --release Ctrl+$j nop mine too\n");
    world.start();
    EXPECT_EQ(world.service().registerHotKey(controlH, {1, 1}), Platform::hotKeyExists);
    EXPECT_EQ(world.service().registerHotKey(controlJ, {1, 2}), Platform::hotKeyExists);
    world.type(controlH);
    world.type(controlJ);
    world.settle();
    EXPECT_THAT(world.watch.commands, ElementsAre("nop mine", "nop mine too"));
}

TEST_F(SwayHotKeyServiceTest, WhatItsUserHasBoundInAnIncludedFileIsRefusedAndStays) {
    const TestSupport::TemporaryFolder folder;
    TestSupport::writeFile(folder.path() / "keys.conf", "bindsym Ctrl+h nop included\n");
    world.configure("include " + (folder.path() / "*.conf").string() + "\n");
    world.start();
    EXPECT_EQ(world.service().registerHotKey(controlH, {1, 1}), Platform::hotKeyExists);
    world.type(controlH);
    world.settle();
    EXPECT_THAT(world.watch.commands, ElementsAre("nop included"));
}

TEST_F(SwayHotKeyServiceTest, IsBoundAgainAfterAReload) {
    follow();
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 1}), 0);
    world.configure("");
    world.settle();
    world.type(controlH);
    world.settle();
    EXPECT_THAT(events,
                ElementsAre(std::pair(HotKeyEvent::pressed, 1U), std::pair(HotKeyEvent::released, 1U)));
}

TEST_F(SwayHotKeyServiceTest, WhatItsUserBindsLaterIsHis) {
    follow();
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 1}), 0);
    world.configure("bindcode --release Ctrl+43 nop mine\n");
    world.settle();
    world.type(controlH);
    world.settle();
    EXPECT_THAT(events, IsEmpty());
    world.service().unregisterHotKey({1, 1});
    world.type(controlH);
    world.settle();
    EXPECT_THAT(world.watch.commands, ElementsAre("nop mine", "nop mine"));
}

TEST_F(SwayHotKeyServiceTest, NothingIsLeftAtTheEnd) {
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 1}), 0);
    EXPECT_TRUE(world.state.contains("bound"));
    world.end();
    EXPECT_FALSE(world.takeAway("Ctrl+43"));
    EXPECT_FALSE(world.state.contains("bound"));
}

TEST_F(SwayHotKeyServiceTest, WhatACrashLeftBehindIsTakenAwayAtTheNextStart) {
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 1}), 0);
    const auto record = world.state.string("bound").value();
    world.end();
    I3Desktop::run("bindcode --release Ctrl+43 nop com.curtain.Curtain Ctrl+43");
    world.state.setString("bound", record);
    world.start();
    EXPECT_FALSE(world.state.contains("bound"));
    EXPECT_FALSE(world.takeAway("Ctrl+43"));
}

TEST_F(SwayHotKeyServiceTest, OneCombinationOfTwoIsBoundUntilBothAreGone) {
    follow();
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 1}), 0);
    ASSERT_EQ(world.service().registerHotKey(controlH, {1, 2}), 0);
    world.service().unregisterHotKey({1, 1});
    world.type(controlH);
    world.settle();
    EXPECT_THAT(events,
                ElementsAre(std::pair(HotKeyEvent::pressed, 2U), std::pair(HotKeyEvent::released, 2U)));
}

TEST_F(SwayHotKeyServiceTest, ARefusalIsAnsweredAndLogged) {
    world.missingKey = virtualH;
    EXPECT_EQ(world.service().registerHotKey(controlH, {1, 1}), Platform::hotKeyInvalid);
    ASSERT_THAT(world.log.lines, SizeIs(1));
    EXPECT_THAT(world.log.lines.front(), HasSubstr("sway refused the shortcut Ctrl+4294967295: "));
    EXPECT_FALSE(world.state.contains("bound"));
}

TEST(SilentSwayTest, NothingIsHeard) {
    QtPlatform::QtMainQueue queue;
    RecordingLog log;
    MemoryUserDefaults state;
    SwayHotKeyService service("/nowhere", queue, log, {}, LinuxPlatform::EarlierValue(state, "bound", "s"),
                              {});
    EXPECT_EQ(service.reach(), Platform::HotKeyReach::nowhere);
}

} // namespace
} // namespace TestSupport
