#include "platform/linux/windows/kwin/KWinWindowSystem.h"

#include "tests/platform/dbus/PrivateBus.h"
#include "tests/platform/windows/kwin/KWinStandIn.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/TemporaryFolder.h"

#include <QJsonObject>
#include <QString>

#include <gmock/gmock.h>

#include <array>
#include <string>

namespace TestSupport {
namespace {

using LinuxPlatform::KWinWindowSystem;
using LinuxPlatform::WindowId;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string id = "{00000000-0000-4000-8000-000000000001}";
const std::string otherId = "{00000000-0000-4001-8000-000000000001}";
constexpr std::array<WindowId, 1> window{0x4000};
constexpr std::array<WindowId, 1> otherWindow{0x4001};

QJsonObject described(const std::string& name) {
    return {{QStringLiteral("id"), QString::fromStdString(name)},
            {QStringLiteral("class"), QStringLiteral("app")},
            {QStringLiteral("isInTaskList"), true},
            {QStringLiteral("isHere"), true}};
}

struct KWinWindowSystemTest : testing::Test {
    PrivateBus bus;
    TemporaryFolder folder;
    HandDrivenQueue queue;
    KWinStandIn kwin{bus.connect(QStringLiteral("kwin"))};
    KWinWindowSystem system{bus.connect(QStringLiteral("curtain")), queue, folder.path()};

    void SetUp() override {
        kwin.windows = {described(id), described(otherId)};
        ASSERT_TRUE(comesTo([&] { return system.knowsEveryWindow(); }));
        ASSERT_TRUE(system.exists(window[0]) && system.exists(otherWindow[0]));
    }

    /// Time passes meanwhile, and nobody looks.
    template <class Condition>
    bool comesTo(const Condition& condition) {
        return spinUntil([&] {
            queue.advance(0.1);
            return condition();
        });
    }

    /// Time stands still meanwhile, so that nothing is late however busy the computer is.
    template <class Condition>
    bool comesAtOnce(const Condition& condition) {
        return spinUntil([&] {
            queue.runReady();
            return condition();
        });
    }

    void pass(double seconds) {
        const auto end = queue.now() + Platform::MainQueue::Seconds(seconds);
        ASSERT_TRUE(comesTo([&] { return queue.now() >= end; }));
    }
};

TEST_F(KWinWindowSystemTest, WindowsAreGivenBackByAKWinThatHadNoTime) {
    system.hide(window);
    ASSERT_TRUE(comesTo([&] { return !kwin.carriedOut.empty(); }));
    kwin.answers = false;
    system.show(window);
    ASSERT_TRUE(comesTo([&] { return !system.knowsEveryWindow(); }));
    pass(30);
    kwin.answers = true;
    EXPECT_TRUE(comesTo([&] { return kwin.carriedOut.size() == 2; }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("hide " + id, "show " + id));
}

TEST_F(KWinWindowSystemTest, WhatIsAskedOfAKWinThatHasNoTimeIsDoneLater) {
    kwin.leave();
    kwin.answers = false;
    kwin.claim();
    ASSERT_TRUE(comesTo([&] { return !system.knowsEveryWindow(); }));
    pass(30);
    kwin.answers = true;
    system.show(window);
    EXPECT_TRUE(comesTo([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("show " + id));
}

TEST_F(KWinWindowSystemTest, ARequestIsDoneOnceThoughTheWindowsAreReportedAnewMeanwhile) {
    kwin.holdsRequests = true;
    system.hide(window);
    ASSERT_TRUE(comesTo([&] { return kwin.holdsSome(); }));
    kwin.forget(KWinStandIn::watcher());
    pass(3);
    system.hidingObstacle();
    ASSERT_TRUE(comesTo([&] { return kwin.has(KWinStandIn::watcher()); }));
    kwin.runHeld();
    system.show(window);
    EXPECT_TRUE(comesTo([&] { return !kwin.carriedOut.empty() && kwin.carriedOut.back() == "show " + id; }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("hide " + id, "show " + id));
}

TEST_F(KWinWindowSystemTest, WhatWaitsToBeShownStaysHiddenWhenItIsHiddenAgain) {
    const std::array both{window[0], otherWindow[0]};
    system.hide(both);
    ASSERT_TRUE(comesTo([&] { return kwin.carriedOut.size() == 1; }));
    kwin.holdsRequests = true;
    system.show(both);
    ASSERT_TRUE(comesTo([&] { return kwin.holdsSome(); }));
    EXPECT_TRUE(system.isShowAwaited(window[0])) << "KWin has not answered";
    EXPECT_TRUE(system.isShowAwaited(otherWindow[0]));
    system.hide(both);
    EXPECT_FALSE(system.isShowAwaited(otherWindow[0]));
    kwin.runHeld();
    EXPECT_TRUE(comesTo([&] { return kwin.carriedOut.size() == 3; }));
    pass(30);
    const auto hiding = "hide " + id + ' ' + otherId;
    EXPECT_THAT(kwin.carriedOut, ElementsAre(hiding, "show " + id, hiding));
    EXPECT_FALSE(system.isShowAwaited(window[0]));
}

TEST_F(KWinWindowSystemTest, WhatWasNotShownIsNotAskedAgainWhenItIsHiddenMeanwhile) {
    system.hide(window);
    ASSERT_TRUE(comesTo([&] { return kwin.carriedOut.size() == 1; }));
    kwin.answers = false;
    system.show(window);
    ASSERT_TRUE(comesTo([&] { return !system.knowsEveryWindow(); }));
    EXPECT_TRUE(system.isShowAwaited(window[0]));
    system.hide(window);
    EXPECT_FALSE(system.isShowAwaited(window[0]));
    kwin.answers = true;
    EXPECT_TRUE(comesTo([&] { return kwin.carriedOut.size() == 2; }));
    pass(30);
    EXPECT_THAT(kwin.carriedOut, ElementsAre("hide " + id, "hide " + id));
}

TEST_F(KWinWindowSystemTest, EveryRequestToHideGetsASecondTry) {
    kwin.refusals = 2;
    system.hide(window);
    ASSERT_TRUE(comesTo([&] { return kwin.refusals == 0; }));
    pass(30);
    EXPECT_THAT(kwin.carriedOut, IsEmpty());
    kwin.refusals = 1;
    system.hide(otherWindow);
    EXPECT_TRUE(comesTo([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("hide " + otherId));
}

TEST_F(KWinWindowSystemTest, ARequestToShowIsNeverGivenUp) {
    kwin.refusals = 5;
    system.show(window);
    EXPECT_TRUE(comesTo([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("show " + id));
    EXPECT_EQ(kwin.refusals, 0);
}

TEST_F(KWinWindowSystemTest, TheWindowsOfAKWinThatTakesItsPlaceCount) {
    system.hide(window);
    ASSERT_TRUE(comesTo([&] { return !kwin.carriedOut.empty(); }));
    kwin.leave();
    kwin.forget(KWinStandIn::watcher());
    ASSERT_TRUE(comesTo([&] { return !system.knowsEveryWindow(); }));
    EXPECT_NE(system.hidingObstacle(), std::nullopt);
    kwin.windows = {described(otherId)};
    kwin.claim();
    ASSERT_TRUE(comesTo([&] { return system.knowsEveryWindow(); }));
    EXPECT_FALSE(system.exists(window[0]));
    system.hide(otherWindow);
    EXPECT_TRUE(comesTo([&] { return kwin.carriedOut.size() == 2; }));
    EXPECT_EQ(kwin.carriedOut.back(), "hide " + otherId);
}

TEST_F(KWinWindowSystemTest, AKWinThatRunsNoScriptsCannotHideUntilItDoes) {
    kwin.runsScripts = false;
    kwin.forget(KWinStandIn::watcher());
    pass(3);
    EXPECT_TRUE(comesTo([&] {
        return system.hidingObstacle() == Platform::HidingObstacle::waylandSession &&
               !system.knowsEveryWindow();
    }));
    system.show(window);
    pass(30);
    EXPECT_THAT(kwin.carriedOut, IsEmpty());
    kwin.runsScripts = true;
    EXPECT_TRUE(comesTo([&] { return system.hidingObstacle() == std::nullopt; }));
    EXPECT_TRUE(comesTo([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("show " + id));
}

TEST_F(KWinWindowSystemTest, TheWatcherRunsItselfThoughAnotherScriptHasItsPlace) {
    kwin.countsScripts = true;
    kwin.add(QStringLiteral("other"), 1);
    kwin.forget(KWinStandIn::watcher());
    kwin.lister.clear();
    pass(3);
    system.hidingObstacle();
    ASSERT_TRUE(comesTo([&] { return !kwin.lister.isEmpty(); }));
    EXPECT_EQ(kwin.lister, KWinStandIn::watcher());
}

struct KWinWatcherThatAsksTest : KWinWindowSystemTest {
    void SetUp() override {
        kwin.asks = true;
        KWinWindowSystemTest::SetUp();
        ASSERT_FALSE(HasFatalFailure());
        // Time has passed until it was ready: that question may be over. The next watcher's is not.
        ASSERT_TRUE(comesTo([&] { return isAnswered(); }));
        kwin.forget(KWinStandIn::watcher());
        pass(3);
        system.hidingObstacle();
        ASSERT_TRUE(
            comesAtOnce([&] { return kwin.has(KWinStandIn::watcher()) && system.knowsEveryWindow(); }));
    }

    bool isAnswered() const { return kwin.answered == kwin.questions; }
};

TEST_F(KWinWatcherThatAsksTest, ItIsToldWhatToDo) {
    system.hide(window);
    ASSERT_TRUE(comesAtOnce([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("hide " + id));
    EXPECT_EQ(kwin.requestScripts, 0);
    system.show(window);
    ASSERT_TRUE(comesTo([&] { return kwin.carriedOut.size() == 2; }));
    EXPECT_EQ(kwin.carriedOut.back(), "show " + id);
    EXPECT_EQ(kwin.requestScripts, 1) << "nobody has asked";
}

TEST_F(KWinWatcherThatAsksTest, WhatComesLateIsCarriedOutByAnotherScript) {
    ASSERT_TRUE(comesTo([&] { return isAnswered(); }));
    system.hide(window);
    ASSERT_TRUE(comesTo([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_EQ(kwin.requestScripts, 1);
}

TEST_F(KWinWatcherThatAsksTest, WhatItDoesNotDoIsAskedOnceMore) {
    kwin.losesAnswers = true;
    system.hide(window);
    ASSERT_TRUE(comesAtOnce([&] { return isAnswered(); }));
    pass(5);
    EXPECT_TRUE(comesAtOnce([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("hide " + id));
    EXPECT_EQ(kwin.requestScripts, 1);
}

TEST_F(KWinWatcherThatAsksTest, WhatAKWinThatEndsWasToldIsAskedOfTheNext) {
    kwin.losesAnswers = true;
    system.hide(window);
    ASSERT_TRUE(comesAtOnce([&] { return isAnswered(); }));
    kwin.leave();
    kwin.losesAnswers = false;
    kwin.forget(KWinStandIn::watcher());
    kwin.claim();
    EXPECT_TRUE(comesAtOnce([&] { return !kwin.carriedOut.empty(); }));
    EXPECT_THAT(kwin.carriedOut, ElementsAre("hide " + id));
}

} // namespace
} // namespace TestSupport
