#include "platform/linux/windows/gnome/GnomeWindowSystem.h"

#include "platform/linux/windows/StandInWindowSystem.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/platform/dbus/BusQuestion.h"
#include "tests/platform/gnome/GnomeShellStandIn.h"
#include "tests/platform/windows/WindowFocusContract.h"
#include "tests/platform/windows/WindowSystemContract.h"
#include "tests/support/FakeWindowSystem.h"
#include "tests/support/HandDrivenQueue.h"

#include <QDBusMessage>

#include <array>
#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TestSupport {
namespace {

using LinuxPlatform::GnomeWindowSystem;
using LinuxPlatform::Window;
using LinuxPlatform::WindowEvent;
using LinuxPlatform::WindowId;
using Platform::HidingObstacle;

const auto curtainName = QStringLiteral("com.curtain.Curtain");
const auto extensionName = QStringLiteral("com.curtain.Curtain.GnomeShell");
const auto extensionPath = QStringLiteral("/com/curtain/Curtain/GnomeShell");

/// Curtain's connection to a bus, with its name.
QDBusConnection connectAsCurtain(const GnomeShellStandIn& shell) {
    auto bus = shell.connect();
    EXPECT_TRUE(bus.registerService(curtainName));
    return bus;
}

class GnomeContractWorld {
public:
    GnomeContractWorld() {
        shell_.setExtension(GnomeShellStandIn::on);
        EXPECT_TRUE(waitUntil([this] { return !system_.hidingObstacle(); }));
    }

    GnomeWindowSystem& system() { return system_; }
    WindowId open(const std::string& name) { return shell_.open(name); }
    static std::uint32_t process() { return GnomeShellStandIn::windowProcess; }
    void close(WindowId window) { shell_.call(QStringLiteral("Close"), window); }
    void bringBack(WindowId window) { shell_.call(QStringLiteral("BringBack"), window); }

    template <class Condition>
    static bool waitUntil(const Condition& condition) {
        return spinUntil(condition, std::chrono::minutes(1));
    }

    std::optional<WindowId> focused() const {
        const auto window = shell_.call(QStringLiteral("Focused")).toULongLong();
        return window == 0 ? std::nullopt : std::optional(WindowId{window});
    }
    void focus(WindowId window) { shell_.call(QStringLiteral("Focus"), window); }
    void moveToSecondWorkspace(WindowId window) {
        shell_.call(QStringLiteral("MoveToSecondWorkspace"), window);
    }
    int workspaceOf(WindowId window) const {
        return shell_.call(QStringLiteral("WorkspaceOf"), window).toInt();
    }
    int workspace() const { return shell_.call(QStringLiteral("Workspace")).toInt(); }
    void goToWorkspace(int number) { shell_.call(QStringLiteral("GoToWorkspace"), QVariantList{number}); }
    void makeFullscreen(WindowId window) { shell_.call(QStringLiteral("MakeFullscreen"), window); }
    bool isFullscreen(WindowId window) const {
        return shell_.call(QStringLiteral("IsFullscreen"), window).toBool();
    }

private:
    GnomeShellStandIn shell_;
    QtPlatform::QtMainQueue queue_;
    GnomeWindowSystem system_{connectAsCurtain(shell_), queue_, [] { return true; }};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Gnome, WindowSystemContract, GnomeContractWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(Gnome, WindowFocusContract, GnomeContractWorld);

struct GnomeWindowSystemTest : testing::Test {
    GnomeShellStandIn shell;
    HandDrivenQueue queue;
    bool isInstalled = true;
    QDBusConnection bus = connectAsCurtain(shell);
    std::unique_ptr<GnomeWindowSystem> system = makeSystem();
    std::vector<std::pair<WindowEvent, WindowId>> events;
    Platform::Subscription subscription = system->addEventHandler(
        [this](WindowEvent event, const Window& window) { events.emplace_back(event, window.id); });

    std::unique_ptr<GnomeWindowSystem> makeSystem() {
        return std::make_unique<GnomeWindowSystem>(bus, queue, [this] { return isInstalled; });
    }

    bool comesTo(std::optional<HidingObstacle> obstacle) {
        return spinUntil([&] { return system->hidingObstacle() == obstacle; });
    }

    WindowId openListed(const std::string& name) {
        const auto window = shell.open(name);
        EXPECT_TRUE(spinUntil([&] { return system->exists(window); }));
        return window;
    }

    bool isHidden(WindowId window) {
        const auto& windows = system->windows();
        const auto found = std::ranges::find(windows, window, &Window::id);
        return found != windows.end() && found->isHidden;
    }

    void hide(WindowId window) {
        system->hide(std::array{window});
        EXPECT_TRUE(spinUntil([&] { return isHidden(window); }));
    }

    WindowId openDialog(WindowId parent) const {
        return shell.call(QStringLiteral("OpenDialog"), parent).toULongLong();
    }

    /// A new window and its dialog, in that order.
    std::pair<WindowId, WindowId> hideWithDialog() {
        shell.setExtension(GnomeShellStandIn::on);
        EXPECT_TRUE(comesTo(std::nullopt));
        const auto parent = openListed("first");
        const auto dialog = openDialog(parent);
        EXPECT_TRUE(spinUntil([&] { return system->exists(dialog); }));
        system->hide(std::array{parent, dialog});
        EXPECT_TRUE(spinUntil([&] { return isHidden(parent) && isHidden(dialog); }));
        return {parent, dialog};
    }

    bool asks(const QString& question, WindowId window) const {
        return shell.call(question, window).toBool();
    }

    /// The name of the error; empty where the extension does what it is asked.
    static QString errorOfHiding(QDBusConnection from, WindowId window) {
        auto request = QDBusMessage::createMethodCall(extensionName, extensionPath, extensionName,
                                                      QStringLiteral("Hide"));
        request.setArguments({QVariant::fromValue(QList<qulonglong>{window})});
        return askOverBus(from, request).errorName();
    }
};

TEST_F(GnomeWindowSystemTest, SaysWhyTheExtensionDoesNotAnswer) {
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    EXPECT_TRUE(comesTo(HidingObstacle::nextSessionNeeded));
    isInstalled = false;
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::extensionMissing);
    for (const auto& [state, obstacle] :
         {std::pair(GnomeShellStandIn::off, HidingObstacle::extensionOff),
          std::pair(GnomeShellStandIn::error, HidingObstacle::extensionFails),
          std::pair(GnomeShellStandIn::outOfDate, HidingObstacle::extensionFails)}) {
        shell.setExtension(state);
        EXPECT_TRUE(comesTo(obstacle)) << state;
        EXPECT_FALSE(system->knowsEveryWindow());
    }
}

TEST_F(GnomeWindowSystemTest, FollowsTheExtensionAsItComesAndGoes) {
    ASSERT_TRUE(comesTo(HidingObstacle::nextSessionNeeded));
    const auto window = shell.open("first");
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    EXPECT_TRUE(system->knowsEveryWindow());
    EXPECT_TRUE(system->exists(window));
    EXPECT_THAT(events, testing::ElementsAre(std::pair(WindowEvent::activated, window)));
    hide(window);
    const auto generation = system->generation();
    shell.setExtension(GnomeShellStandIn::off);
    ASSERT_TRUE(comesTo(HidingObstacle::extensionOff));
    EXPECT_NE(system->generation(), generation);
    EXPECT_THAT(system->windows(), testing::IsEmpty());
    // What opened meanwhile is news.
    const auto other = shell.open("other");
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    EXPECT_TRUE(isHidden(window));
    EXPECT_THAT(events, testing::Contains(std::pair(WindowEvent::opened, other)));
}

TEST_F(GnomeWindowSystemTest, WindowsInViewAreAnnouncedWhenTheyCanBeHidden) {
    const auto putAway = shell.open("first");
    shell.call(QStringLiteral("Minimize"), putAway);
    const auto window = shell.open("second");
    auto standIn = std::make_unique<FakeWindowSystem>();
    standIn->everyWindowIsKnown = false;
    LinuxPlatform::StandInWindowSystem whole(std::move(system), std::move(standIn));
    std::vector<std::pair<WindowEvent, WindowId>> told;
    const auto telling = whole.addEventHandler([&](WindowEvent event, const Window& announced) {
        EXPECT_EQ(whole.hidingObstacle(), std::nullopt);
        told.emplace_back(event, announced.id);
    });
    const auto isUp = [&] { return !whole.hidingObstacle(); };
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(spinUntil(isUp));
    EXPECT_THAT(told, testing::ElementsAre(std::pair(WindowEvent::activated, window)));
    shell.setExtension(GnomeShellStandIn::off);
    ASSERT_TRUE(spinUntil([&] { return !isUp(); }));
    const auto other = shell.open("other");
    told.clear();
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(spinUntil(isUp));
    EXPECT_THAT(told, testing::Contains(std::pair(WindowEvent::opened, other)));
}

TEST_F(GnomeWindowSystemTest, AsksAgainWhereAnAnswerWasLost) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = openListed("first");
    shell.call(QStringLiteral("LoseNextWatch"));
    system = makeSystem();
    EXPECT_TRUE(comesTo(std::nullopt));
    EXPECT_TRUE(system->exists(window));
}

TEST_F(GnomeWindowSystemTest, SwitchesTheExtensionOn) {
    ASSERT_TRUE(comesTo(HidingObstacle::nextSessionNeeded));
    system->switchExtensionOn();
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::nextSessionNeeded);
    shell.setExtension(GnomeShellStandIn::off);
    ASSERT_TRUE(comesTo(HidingObstacle::extensionOff));
    system->switchExtensionOn();
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    EXPECT_TRUE(comesTo(std::nullopt));
}

TEST_F(GnomeWindowSystemTest, AnotherVersionIsLoadedWithTheNextSession) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    shell.call(QStringLiteral("SetVersion"), QVariantList{2U});
    system = makeSystem();
    EXPECT_TRUE(comesTo(HidingObstacle::nextSessionNeeded));
}

TEST_F(GnomeWindowSystemTest, NobodyElseCanHide) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = openListed("first");
    EXPECT_EQ(errorOfHiding(shell.connect(), window),
              QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
    EXPECT_FALSE(isHidden(window));
    EXPECT_EQ(errorOfHiding(bus, window), QString());
    EXPECT_TRUE(spinUntil([&] { return isHidden(window); }));
}

TEST_F(GnomeWindowSystemTest, AProgramThatPosesAsTheExtensionIsNotBelieved) {
    auto impostor = shell.connect();
    ASSERT_TRUE(comesTo(HidingObstacle::nextSessionNeeded));
    ASSERT_TRUE(impostor.registerService(extensionName));
    shell.setExtension(GnomeShellStandIn::off);
    EXPECT_TRUE(comesTo(HidingObstacle::extensionOff));
    EXPECT_FALSE(system->knowsEveryWindow());
}

TEST_F(GnomeWindowSystemTest, WhatCurtainHidStaysHiddenWhenItEnds) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = openListed("first");
    hide(window);
    system.reset();
    ASSERT_TRUE(bus.unregisterService(curtainName));
    const auto other = shell.open("first");
    EXPECT_FALSE(asks(QStringLiteral("IsInOverview"), window));
    EXPECT_TRUE(asks(QStringLiteral("IsInOverview"), other));
    EXPECT_EQ(errorOfHiding(bus, other), QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
    ASSERT_TRUE(bus.registerService(curtainName));
    system = makeSystem();
    ASSERT_TRUE(comesTo(std::nullopt));
    EXPECT_TRUE(isHidden(window));
    EXPECT_FALSE(isHidden(other));
    system->show(std::array{window});
    EXPECT_TRUE(spinUntil([&] { return !isHidden(window); }));
}

TEST_F(GnomeWindowSystemTest, HiddenWindowIsInNoPreview) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = openListed("first");
    hide(window);
    EXPECT_FALSE(asks(QStringLiteral("IsPictured"), window));
    EXPECT_FALSE(asks(QStringLiteral("IsInOverview"), window));
    // Its user, who may want to see it.
    shell.call(QStringLiteral("BringBack"), window);
    EXPECT_TRUE(asks(QStringLiteral("IsPictured"), window));
    EXPECT_TRUE(asks(QStringLiteral("IsInOverview"), window));
    ASSERT_TRUE(spinUntil([&] { return !isHidden(window); }));
    hide(window);
    system->show(std::array{window});
    ASSERT_TRUE(spinUntil([&] { return !isHidden(window); }));
    EXPECT_TRUE(asks(QStringLiteral("IsPictured"), window));
    hide(window);
    shell.setExtension(GnomeShellStandIn::off);
    EXPECT_TRUE(asks(QStringLiteral("IsPictured"), window));
}

TEST_F(GnomeWindowSystemTest, WindowIsHiddenWhileTheDesktopIsShown) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = openListed("first");
    shell.call(QStringLiteral("ShowDesktop"), QVariantList{true});
    const auto other = openListed("other");
    EXPECT_FALSE(isHidden(other));
    hide(window);
    shell.call(QStringLiteral("ShowDesktop"), QVariantList{false});
    EXPECT_FALSE(asks(QStringLiteral("IsShowing"), window));
    EXPECT_TRUE(asks(QStringLiteral("IsShowing"), other));
}

TEST_F(GnomeWindowSystemTest, DialogIsHiddenWithItsParent) {
    const auto [parent, dialog] = hideWithDialog();
    const auto late = openDialog(parent);
    ASSERT_TRUE(spinUntil([&] { return isHidden(late); }));
    EXPECT_FALSE(asks(QStringLiteral("IsInOverview"), late));
    for (const auto window : {parent, dialog}) {
        EXPECT_FALSE(asks(QStringLiteral("IsPictured"), window));
        EXPECT_FALSE(asks(QStringLiteral("IsInOverview"), window));
    }
    // Its user brings back the one, and so the other.
    shell.call(QStringLiteral("BringBack"), parent);
    for (const auto window : {parent, dialog, late}) {
        EXPECT_TRUE(asks(QStringLiteral("IsPictured"), window));
        EXPECT_TRUE(asks(QStringLiteral("IsInOverview"), window));
        EXPECT_TRUE(asks(QStringLiteral("IsShowing"), window));
    }
    system->hide(std::array{parent, dialog});
    ASSERT_TRUE(spinUntil([&] { return isHidden(parent) && isHidden(dialog); }));
    system->show(std::array{parent, dialog});
    ASSERT_TRUE(spinUntil([&] { return !isHidden(parent) && !isHidden(dialog); }));
    EXPECT_TRUE(asks(QStringLiteral("IsPictured"), dialog));
    EXPECT_TRUE(asks(QStringLiteral("IsShowing"), dialog));
}

TEST_F(GnomeWindowSystemTest, DialogIsBackWhenItsHiddenParentIsClosed) {
    const auto [parent, dialog] = hideWithDialog();
    shell.call(QStringLiteral("Close"), parent);
    ASSERT_TRUE(spinUntil([&] { return !isHidden(dialog); }));
    EXPECT_TRUE(asks(QStringLiteral("IsPictured"), dialog));
    EXPECT_THAT(events, testing::Contains(std::pair(WindowEvent::activated, dialog)));
    hide(dialog);
    EXPECT_FALSE(asks(QStringLiteral("IsShowing"), dialog));
}

TEST_F(GnomeWindowSystemTest, WindowsComeBackToTheirPlacesAmongTheOthers) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto bottom = openListed("private");
    const auto low = openListed("open");
    const auto middle = openListed("private");
    const auto high = openListed("open");
    const auto top = openListed("other private");
    const auto stacking = [&] {
        return qdbus_cast<QList<qulonglong>>(shell.call(QStringLiteral("Stacking")));
    };
    const QList<qulonglong> before{bottom, low, middle, high, top};
    ASSERT_EQ(stacking(), before);
    hide(top);
    system->hide(std::array{bottom, middle});
    ASSERT_TRUE(spinUntil([&] { return isHidden(bottom) && isHidden(middle); }));
    system->show(std::array{bottom, middle});
    system->show(std::array{top});
    ASSERT_TRUE(spinUntil([&] { return !isHidden(bottom) && !isHidden(middle) && !isHidden(top); }));
    EXPECT_EQ(stacking(), before);
}

TEST_F(GnomeWindowSystemTest, WindowThatGetsItsNameLateIsAnnouncedAgain) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = WindowId{shell.call(QStringLiteral("OpenUnnamed")).toULongLong()};
    ASSERT_TRUE(spinUntil([&] { return system->exists(window); }));
    events.clear();
    shell.call(QStringLiteral("Name"), QVariantList{QVariant::fromValue<qulonglong>(window),
                                                    QStringLiteral("A <b>\u202Ename</b>; ñ\n")});
    EXPECT_TRUE(
        spinUntil([&] { return std::ranges::count(events, std::pair(WindowEvent::opened, window)) == 1; }));
    EXPECT_EQ(system->windows().front().hints.className, "A <b>\u202Ename</b>; ñ\n");
}

TEST_F(GnomeWindowSystemTest, SaysThatTheShellDoesNotHideWhatItIsAskedTo) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = openListed("first");
    shell.call(QStringLiteral("BreakMinimizing"));
    system->hide(std::array{window});
    EXPECT_TRUE(comesTo(HidingObstacle::extensionFails));
    EXPECT_FALSE(isHidden(window));
    shell.call(QStringLiteral("Minimize"), window);
    EXPECT_TRUE(comesTo(std::nullopt));
    EXPECT_TRUE(isHidden(window));
}

TEST_F(GnomeWindowSystemTest, AShellThatHangsIsNotTrusted) {
    shell.setExtension(GnomeShellStandIn::on);
    ASSERT_TRUE(comesTo(std::nullopt));
    const auto window = openListed("first");
    ASSERT_EQ(::kill(shell.process(), SIGSTOP), 0);
    system->hide(std::array{window});
    queue.advance(4);
    EXPECT_EQ(system->hidingObstacle(), std::nullopt);
    queue.advance(1);
    EXPECT_EQ(system->hidingObstacle(), HidingObstacle::notKnownYet);
    EXPECT_FALSE(isHidden(window));
    ASSERT_EQ(::kill(shell.process(), SIGCONT), 0);
    EXPECT_TRUE(comesTo(std::nullopt));
    EXPECT_TRUE(isHidden(window));
}

} // namespace
} // namespace TestSupport
