#include "Curtain/FixEverything.h"

#include "tests/support/FakeProcessRunner.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingAppHiding.h"

#include <gmock/gmock.h>

#include <functional>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakeProcessRunner;

struct FixEverythingTest : testing::Test {
    TestSupport::RecordingAppHiding hiding;
    CurtainCore::HideEngine engine{hiding};
    TestSupport::MemoryUserDefaults defaults;
    CurtainCore::PreferencesStore store{defaults};
    FakeProcessRunner runner;
    Curtain::DesktopController desktop{runner};

    FixEverythingTest() {
        change([](auto& preferences) { preferences.targetApps = {{"b", "B"}, {"a", "A"}}; });
    }

    void change(const std::function<void(CurtainCore::Preferences&)>& edit) {
        auto preferences = store.load();
        edit(preferences);
        store.save(preferences);
    }

    bool fix() { return Curtain::FixEverything::run(engine, store, desktop); }
};

TEST_F(FixEverythingTest, HidesAllPrivateAppsInTheirOrderAndTheIcons) {
    hiding.run("a");
    hiding.run("b");
    EXPECT_TRUE(fix());
    EXPECT_TRUE(engine.isActive());
    EXPECT_THAT(hiding.calls,
                ElementsAre("isRunning b", "isHidden b", "hide b", "isRunning a", "isHidden a", "hide a"));
    EXPECT_THAT(runner.runs,
                ElementsAre(FakeProcessRunner::readingIcons(), FakeProcessRunner::writingIcons(false),
                            FakeProcessRunner::restartingDesktop()));
}

TEST_F(FixEverythingTest, SwitchesPrivacyModeOnEvenWithoutPrivateApps) {
    change([](auto& preferences) { preferences.targetApps.clear(); });
    fix();
    EXPECT_TRUE(engine.isActive());
    EXPECT_THAT(hiding.calls, IsEmpty());
}

TEST_F(FixEverythingTest, HidesNothingAgainWhenPrivacyModeIsOnButStillTheIcons) {
    engine.activate({});
    hiding.run("a");
    fix();
    EXPECT_THAT(hiding.calls, IsEmpty());
    EXPECT_THAT(runner.runs,
                ElementsAre(FakeProcessRunner::readingIcons(), FakeProcessRunner::writingIcons(false),
                            FakeProcessRunner::restartingDesktop()));
}

TEST_F(FixEverythingTest, LeavesHiddenIconsAlone) {
    runner.setting = "0\n";
    fix();
    EXPECT_THAT(runner.runs, ElementsAre(FakeProcessRunner::readingIcons()));
}

TEST_F(FixEverythingTest, DoesNotTouchTheIconsAgainstTheUsersWish) {
    change([](auto& preferences) { preferences.hideFinderWithFixEverything = false; });
    fix();
    EXPECT_TRUE(engine.isActive());
    EXPECT_THAT(runner.runs, IsEmpty());
}

TEST_F(FixEverythingTest, TellsWhetherNotificationsNeedAttention) {
    EXPECT_TRUE(fix());
    change([](auto& preferences) { preferences.notificationsMarkedHandled = true; });
    EXPECT_FALSE(fix());
    change([](auto& preferences) { preferences.checkNotifications = false; });
    EXPECT_FALSE(fix());
    change([](auto& preferences) { preferences.notificationsMarkedHandled = false; });
    EXPECT_FALSE(fix());
}

TEST_F(FixEverythingTest, ChangesNoPreference) {
    const auto writes = defaults.writes;
    fix();
    EXPECT_EQ(defaults.writes, writes);
}

} // namespace
