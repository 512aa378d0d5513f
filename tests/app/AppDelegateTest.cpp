#include "Curtain/AppDelegate.h"

#include "core/PreferencesJson.h"
#include "tests/support/FakePlatform.h"

#include <gmock/gmock.h>

#include <memory>

namespace {

using Platform::WorkspaceNotification;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::FakePlatform;

const Platform::Image openImage{"/resources/open.pdf", 18, 18, true, ""};
const Platform::Image closedImage{"/resources/close.pdf", 18, 18, true, ""};

struct AppDelegateTest : testing::Test {
    FakePlatform fakes;
    std::unique_ptr<Curtain::AppDelegate> delegate = std::make_unique<Curtain::AppDelegate>(fakes.platform);

    void makePrivate(const std::vector<std::string>& identifiers) {
        CurtainCore::Preferences preferences;
        for (const auto& identifier : identifiers) {
            preferences.targetApps.push_back({identifier, identifier});
        }
        fakes.userDefaults.values["curtain.preferences.v1"] = encodePreferences(preferences).value();
    }

    void launch() { delegate->applicationDidFinishLaunching(); }

    void pressShortcut() {
        fakes.hotKeyService.press();
        fakes.hotKeyService.release();
    }

    std::vector<std::string> takeCalls() { return std::exchange(fakes.workspace.calls, {}); }
};

TEST_F(AppDelegateTest, NothingHappensBeforeTheLaunch) {
    EXPECT_THAT(fakes.events, IsEmpty());
    EXPECT_THAT(fakes.workspace.observed, IsEmpty());
    EXPECT_THAT(fakes.userDefaults.values, IsEmpty());
}

TEST_F(AppDelegateTest, LaunchMakesAnAccessoryWithAnOpenCurtainInThePanel) {
    launch();
    EXPECT_EQ(fakes.application.policy, Platform::ActivationPolicy::accessory);
    EXPECT_THAT(fakes.events, ElementsAre("activation policy", "status item", "status image"));
    EXPECT_EQ(fakes.statusBar.items, 1);
    EXPECT_THAT(fakes.statusBar.images, ElementsAre(openImage));
    EXPECT_THAT(fakes.workspace.observed, ElementsAre(WorkspaceNotification::didActivateApplication,
                                                      WorkspaceNotification::didLaunchApplication));
    EXPECT_EQ(fakes.hotKeyService.registrations.size(), 1U);
    EXPECT_THAT(fakes.workspace.calls, IsEmpty());
}

TEST_F(AppDelegateTest, ShortcutHidesThePrivateAppsAndShowsThemAgain) {
    makePrivate({"b", "absent", "a"});
    fakes.workspace.run("a");
    fakes.workspace.run("b");
    fakes.workspace.run("other");
    launch();

    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("hide b", "hide a"));
    EXPECT_EQ(fakes.statusBar.images.back(), closedImage);

    pressShortcut();
    EXPECT_THAT(takeCalls(),
                testing::UnorderedElementsAre("unhide a", "activate a 2", "unhide b", "activate b 2"));
    EXPECT_EQ(fakes.statusBar.images.back(), openImage);
}

TEST_F(AppDelegateTest, PreferencesAreReadAtEachPress) {
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    pressShortcut();
    EXPECT_THAT(takeCalls(), IsEmpty());
    makePrivate({"a"});
    pressShortcut();
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
}

TEST_F(AppDelegateTest, CorruptPreferencesHideNothingButSwitchTheMode) {
    fakes.userDefaults.values["curtain.preferences.v1"] = "corrupt";
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(fakes.statusBar.images.back(), closedImage);
    EXPECT_EQ(fakes.userDefaults.values["curtain.preferences.v1"], "corrupt");
}

TEST_F(AppDelegateTest, PrivateAppThatReturnsIsHiddenAgainAfterAFifthOfASecond) {
    makePrivate({"a"});
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    takeCalls();
    fakes.workspace.bringToFront("a");
    fakes.mainQueue.advance(0.19);
    EXPECT_THAT(takeCalls(), IsEmpty());
    fakes.mainQueue.advance(0.02);
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
}

TEST_F(AppDelegateTest, PrivateAppThatIsLaunchedIsHiddenAndStaysSoAfterwards) {
    makePrivate({"a"});
    launch();
    pressShortcut();
    fakes.workspace.run("a");
    fakes.workspace.post(WorkspaceNotification::didLaunchApplication,
                         fakes.workspace.runningApplicationsWithBundleIdentifier("a").at(0));
    fakes.mainQueue.advance(0.2);
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    pressShortcut();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(AppDelegateTest, OtherAppsComeToTheFrontFreely) {
    makePrivate({"a"});
    fakes.workspace.run("b");
    launch();
    pressShortcut();
    fakes.workspace.bringToFront("b");
    fakes.mainQueue.advance(1.0);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(AppDelegateTest, AppThatReturnsWhileTheModeIsSwitchedOffStays) {
    makePrivate({"a"});
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    fakes.workspace.bringToFront("a");
    pressShortcut();
    takeCalls();
    fakes.mainQueue.advance(1.0);
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(AppDelegateTest, NothingIsCalledOnceTheControllerIsGone) {
    makePrivate({"a"});
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    fakes.workspace.bringToFront("a");
    takeCalls();
    delegate.reset();
    fakes.mainQueue.advance(1.0);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_EQ(fakes.statusBar.items, 0);
    EXPECT_THAT(fakes.hotKeyService.registrations, IsEmpty());
}

TEST_F(AppDelegateTest, MissingImagesGiveWayToSymbols) {
    fakes.resources.files.clear();
    launch();
    pressShortcut();
    EXPECT_THAT(fakes.statusBar.images,
                ElementsAre(Platform::Image{"/symbols/eye", 0, 0, true, "Curtain"},
                            Platform::Image{"/symbols/eye.slash", 0, 0, true, "Curtain"}));
}

TEST_F(AppDelegateTest, TakenShortcutIsSaidAndTheProgramLivesOn) {
    fakes.hotKeyService.status = Platform::hotKeyExists;
    launch();
    EXPECT_THAT(fakes.log.lines, ElementsAre("Error registering hotkey Ctrl+Alt+Super+H: -9878"));
    EXPECT_EQ(fakes.statusBar.items, 1);
}

} // namespace
