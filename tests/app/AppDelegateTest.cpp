#include "tests/app/AppDelegateFixture.h"

#include "Curtain/PlatformWording.h"
#include "core/Localizer.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Platform::WorkspaceNotification;
using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::leftClick;
using TestSupport::rightClick;

const Platform::Image openImage{"/resources/open.pdf", 18, 18, true, ""};
const Platform::Image closedImage{"/resources/close.pdf", 18, 18, true, ""};

using AppDelegateTest = TestSupport::AppDelegateFixture;

/// Notes its own end.
struct EndingFiles : TestSupport::FakeInstallation {
    explicit EndingFiles(bool& isThereNow) : isThere(isThereNow) {}
    ~EndingFiles() override { isThere = false; }
    bool& isThere;
};

/// Notes whether the files are still there at its end.
struct EndingQueues : TestSupport::HandDrivenWorkQueues {
    EndingQueues(const bool& areFilesThereNow, bool& wereFilesThereThen)
        : areFilesThere(areFilesThereNow),
          wereFilesThere(wereFilesThereThen) {}
    ~EndingQueues() override { wereFilesThere = areFilesThere; }
    const bool& areFilesThere;
    bool& wereFilesThere;
};

TEST(PlatformTest, WorkThatIsUnderWayAtTheEndFindsTheOtherPorts) {
    bool areFilesThere = true;
    bool wereFilesThere = false;
    {
        Platform::Platform platform;
        platform.fileManager = std::make_unique<EndingFiles>(areFilesThere);
        platform.workQueues = std::make_unique<EndingQueues>(areFilesThere, wereFilesThere);
    }
    EXPECT_FALSE(areFilesThere);
    EXPECT_TRUE(wereFilesThere);
}

TEST_F(AppDelegateTest, NothingHappensBeforeTheLaunch) {
    EXPECT_THAT(fakes.events, IsEmpty());
    EXPECT_THAT(fakes.workspace.observed, IsEmpty());
    EXPECT_THAT(fakes.userDefaults.values, IsEmpty());
}

TEST_F(AppDelegateTest, LaunchMakesAnAccessoryWithAnOpenCurtainInThePanel) {
    launch();
    EXPECT_EQ(fakes.application.policy, Platform::ActivationPolicy::accessory);
    EXPECT_THAT(fakes.events,
                ElementsAre("activation policy", "popover delegate", "status item", "status image",
                            "global monitor", "local monitor", "workspace observer", "workspace observer",
                            "hot key", "notification delegate"));
    EXPECT_EQ(fakes.eventMonitors.globalMask, 10U);
    EXPECT_EQ(fakes.eventMonitors.localMask(), 1024U);
    EXPECT_EQ(fakes.statusBar.items, 1);
    EXPECT_THAT(fakes.statusBar.images, ElementsAre(openImage));
    EXPECT_THAT(fakes.workspace.observed, ElementsAre(WorkspaceNotification::didActivateApplication,
                                                      WorkspaceNotification::didLaunchApplication));
    EXPECT_EQ(fakes.hotKeyService.registrations.size(), 1U);
    EXPECT_THAT(fakes.workspace.calls, IsEmpty());
}

TEST_F(AppDelegateTest, WhoClicksAsSoonAsThereIsAnIconGetsThePopover) {
    change([](auto& record) { record.hasOnboarded = true; });
    fakes.statusBar.onImage = [this] { fakes.statusBar.click(leftClick); };
    launch();
    EXPECT_TRUE(fakes.popover.isShown());
}

TEST_F(AppDelegateTest, TheShortcutIsRegisteredBeforeNoticesLearnTheLanguageOfTheUser) {
    change([](auto& record) { record.hasOnboarded = true; });
    fakes.locale.language = "es";
    makePrivate({"a"});
    fakes.workspace.run("a");
    fakes.hotKeyService.onRegister = [this] {
        delegate->toggleModeFromHotkey();
        fakes.workspace.bringToFront("a");
        fakes.mainQueue.advance(0.2);
    };
    launch();
    ASSERT_EQ(fakes.userNotificationCenter.added.size(), 1U);
    EXPECT_EQ(fakes.userNotificationCenter.added[0].content.title, "Hidden by Curtain");
}

TEST_F(AppDelegateTest, ButtonsOfNoticesAreRegisteredInTheLanguageOfTheUser) {
    change([](auto& record) { record.hasOnboarded = true; });
    fakes.locale.language = "es";
    launch();
    ASSERT_EQ(fakes.userNotificationCenter.categories.size(), 2U);
    EXPECT_EQ(fakes.userNotificationCenter.categories[0].actions.at(0).title, "Deshacer");
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

TEST_F(AppDelegateTest, OtherProgramsSwitchPrivacyModeAndItsEndIsTold) {
    change([](auto& record) { record.hasOnboarded = true; });
    using Request = Curtain::AppDelegate::PrivacyRequest;
    makePrivate({"a"});
    fakes.workspace.run("a");
    launch();
    const auto& told = fakes.userNotificationCenter.delivered;

    delegate->privacyRequested(Request::off);
    EXPECT_THAT(takeCalls(), IsEmpty());
    delegate->privacyRequested(Request::on);
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    delegate->privacyRequested(Request::on);
    EXPECT_THAT(takeCalls(), IsEmpty());
    EXPECT_THAT(told, IsEmpty());

    delegate->privacyRequested(Request::off);
    EXPECT_THAT(takeCalls(), ElementsAre("unhide a", "activate a 2"));
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].content.title, "Privacy mode off");
    EXPECT_EQ(told[0].content.body, "Another program asked for it.");

    delegate->privacyRequested(Request::toggle);
    EXPECT_THAT(told, IsEmpty()) << "it is not true any more";
    pressShortcut();
    EXPECT_THAT(told, IsEmpty()) << "that was nobody else";
    delegate->privacyRequested(Request::toggle);
    delegate->privacyRequested(Request::toggle);
    EXPECT_THAT(told, IsEmpty()) << "that may be a shortcut of the user's desktop";
}

TEST_F(AppDelegateTest, ShortcutCoversThePrivateAppsBeforeItHidesThemAndUncoversThemBeforeItShowsThem) {
    fakes.workspace.run("a");
    makePrivate({"a", "later"});
    launch();
    fakes.appShield.onCover = [&] { EXPECT_THAT(fakes.workspace.calls, IsEmpty()); };
    pressShortcut();
    EXPECT_THAT(fakes.appShield.covered, ElementsAre("a", "later"));
    EXPECT_THAT(takeCalls(), ElementsAre("hide a"));
    pressShortcut();
    EXPECT_THAT(fakes.appShield.covered, IsEmpty());
    EXPECT_THAT(takeCalls(), testing::Contains("unhide a"));
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

struct DamagedPreferencesTest : AppDelegateTest {
    static constexpr auto key = "curtain.preferences.v1";

    DamagedPreferencesTest() { fakes.userDefaults.values[key] = "corrupt"; }

    std::vector<std::string> takeNotices() {
        std::vector<std::string> notices;
        for (const auto& request : std::exchange(fakes.userNotificationCenter.added, {})) {
            notices.push_back(request.content.title + ": " + request.content.body);
        }
        return notices;
    }
};

constexpr auto lossNotice = "Your settings could not be read: The settings file is damaged, so the defaults "
                            "apply and no app is private. A copy of it was kept.\n";
constexpr auto nothingHiddenNotice =
    "No app was hidden: Your private apps are not known, since the settings could not be read. Choose them "
    "again in the settings.";

TEST_F(DamagedPreferencesTest, AreToldOnceWithTheNameOfTheirCopy) {
    launch();
    fakes.mainQueue.advance(1);
    EXPECT_THAT(takeNotices(), ElementsAre(lossNotice + std::string("curtain.preferences.v1.damaged-1")));
    EXPECT_THAT(fakes.userDefaults.copies, ElementsAre("corrupt"));
    EXPECT_EQ(fakes.userDefaults.values[key], "corrupt");
    fakes.statusBar.click(leftClick);
    fakes.mainQueue.advance(10);
    EXPECT_THAT(takeNotices(), IsEmpty());
    EXPECT_THAT(fakes.log.lines, IsEmpty());
}

TEST_F(DamagedPreferencesTest, ThatCannotEvenBeReadAreToldToo) {
    fakes.userDefaults.unreadable.insert(key);
    launch();
    fakes.mainQueue.advance(1);
    EXPECT_THAT(
        takeNotices(),
        ElementsAre("Your settings could not be read: The settings file can't be read, so the defaults "
                    "apply and no app is private."));
}

TEST_F(DamagedPreferencesTest, AreToldInTheLanguageOfTheSystem) {
    fakes.locale.language = "fr";
    launch();
    fakes.mainQueue.advance(1);
    EXPECT_THAT(takeNotices(), ElementsAre(testing::StartsWith("Vos paramètres n’ont pas pu être lus: ")));
}

TEST_F(DamagedPreferencesTest, WhichComeWhileItRunsAreToldAtTheNextSwitch) {
    fakes.userDefaults.values.erase(key);
    change([](auto& record) { record.hasOnboarded = true; });
    makePrivate({"a"});
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    pressShortcut();
    fakes.mainQueue.advance(1);
    EXPECT_THAT(takeNotices(), IsEmpty());
    fakes.userDefaults.values[key] = "corrupt";
    pressShortcut();
    fakes.mainQueue.advance(1);
    EXPECT_THAT(takeNotices(), ElementsAre(nothingHiddenNotice, testing::StartsWith(lossNotice)));
}

TEST_F(DamagedPreferencesTest, EverySwitchOnWithTheLostListSaysSoUntilAppsAreChosen) {
    launch();
    fakes.mainQueue.advance(1);
    takeNotices();
    pressShortcut();
    EXPECT_THAT(takeNotices(), ElementsAre(nothingHiddenNotice));
    EXPECT_EQ(fakes.statusBar.images.back(), closedImage);
    pressShortcut();
    EXPECT_THAT(takeNotices(), IsEmpty());
    change([](auto& record) { record.hasOnboarded = true; });
    pressShortcut();
    EXPECT_THAT(takeNotices(), ElementsAre(nothingHiddenNotice)) << "the list is lost all the same";
    pressShortcut();
    makePrivate({"a"});
    pressShortcut();
    EXPECT_THAT(takeNotices(), IsEmpty());
}

TEST_F(AppDelegateTest, AnEmptyListOfItsUsersChoiceIsHiddenWithoutAWord) {
    change([](auto& record) { record.hasOnboarded = true; });
    launch();
    pressShortcut();
    fakes.mainQueue.advance(1);
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty());
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

TEST_F(AppDelegateTest, MiddleClickSwitchesPrivacyMode) {
    change([](auto& record) { record.hasOnboarded = true; });
    launch();
    fakes.statusBar.secondaryAction();
    EXPECT_EQ(fakes.statusBar.images.back(), closedImage);
    EXPECT_THAT(fakes.userNotificationCenter.added, IsEmpty()) << "who clicks knows";
    fakes.statusBar.secondaryAction();
    EXPECT_EQ(fakes.statusBar.images.back(), openImage);
}

TEST_F(AppDelegateTest, ToolTipTellsTheModeAndTheShortcut) {
    launch();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off (Ctrl+Alt+Super+H)");
    pressShortcut();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode on (Ctrl+Alt+Super+H)");
    fakes.keyboard.labels[Platform::KeyCode::h] = "Р";
    pressShortcut();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off (Ctrl+Alt+Super+Р)");
}

TEST_F(AppDelegateTest, ToolTipNamesNoShortcutWhereNoneIsHeard) {
    fakes.hotKeyService.heard = Platform::HotKeyReach::nowhere;
    launch();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off");
}

TEST_F(AppDelegateTest, ToolTipNamesAShortcutOnlyWhileItIsHeardEverywhere) {
    fakes.hotKeyService.heard = Platform::HotKeyReach::inX11WindowsOnly;
    fakes.systemVersion.obstacle = Platform::HidingObstacle::notKnownYet;
    launch();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off");
    fakes.hotKeyService.heard = Platform::HotKeyReach::everywhere;
    fakes.systemVersion.obstacle.reset();
    fakes.mainQueue.advance(1);
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off (Ctrl+Alt+Super+H)");
}

TEST_F(AppDelegateTest, ToolTipNamesNoShortcutThatWasRefused) {
    fakes.hotKeyService.status = Platform::hotKeyExists;
    launch();
    EXPECT_EQ(fakes.statusBar.toolTip, "Curtain — Privacy mode off");
}

TEST_F(AppDelegateTest, ArabicToolTipRunsFromRightToLeft) {
    fakes.locale.language = "ar";
    launch();
    EXPECT_EQ(fakes.statusBar.toolTip, "\u200FCurtain — وضع الخصوصية متوقف (Ctrl+Alt+Super+H)");
}

TEST_F(AppDelegateTest, MissingImagesGiveWayToSymbols) {
    fakes.resources.files.clear();
    launch();
    pressShortcut();
    EXPECT_THAT(fakes.statusBar.images,
                ElementsAre(Platform::Image{"/symbols/eye", 0, 0, true, "Curtain"},
                            Platform::Image{"/symbols/eye.slash", 0, 0, true, "Curtain"}));
}

struct StatusMenuTest : AppDelegateTest {
    std::vector<std::string> titles() {
        std::vector<std::string> result;
        for (const auto& item : fakes.statusBar.menus.at(0).items) {
            result.push_back(item.title);
        }
        return result;
    }

    void choose(CurtainCore::AppLanguage language) {
        change([&](auto& record) { record.language = language; });
    }
};

TEST_F(StatusMenuTest, OpensOnARightClickOrWithTheControlKey) {
    launch();
    for (const auto& event :
         {rightClick, Platform::Event{2, 0x40000}, Platform::Event{2, 0x40000 + 0x20000}}) {
        fakes.statusBar.click(event);
        EXPECT_EQ(fakes.statusBar.menus.size(), 1U);
        fakes.statusBar.menus.clear();
    }
}

TEST_F(StatusMenuTest, DoesNotOpenOnOtherClicks) {
    launch();
    fakes.statusBar.click(leftClick);
    fakes.statusBar.click(Platform::Event{2, 0x20000});
    fakes.statusBar.click(std::nullopt);
    fakes.statusBar.click(Platform::Event{1, 0x40000});
    EXPECT_THAT(fakes.statusBar.menus, IsEmpty());
}

TEST_F(StatusMenuTest, HasTitleOpenSettingsAndQuit) {
    launch();
    fakes.statusBar.click(rightClick);
    EXPECT_THAT(titles(), ElementsAre("Curtain 1.2.3", "", "Open", "Settings", "", "Quit"));
    const auto& items = fakes.statusBar.menus.at(0).items;
    EXPECT_TRUE(items[1].isSeparator() && items[4].isSeparator());
    EXPECT_FALSE(items[0].action);
    for (const std::size_t enabled : {2U, 3U, 5U}) {
        EXPECT_TRUE(items[enabled].action) << items[enabled].title;
    }
}

TEST_F(StatusMenuTest, UnknownVersionIsAQuestionMark) {
    fakes.resources.version.reset();
    launch();
    fakes.statusBar.click(rightClick);
    EXPECT_EQ(titles().at(0), "Curtain ?");
}

TEST_F(StatusMenuTest, QuitEndsTheProgramAndRestoresNothing) {
    makePrivate({"a"});
    fakes.workspace.run("a");
    launch();
    pressShortcut();
    takeCalls();
    fakes.statusBar.click(rightClick);
    fakes.statusBar.menus.at(0).items.back().action();
    EXPECT_TRUE(fakes.application.isTerminated);
    delegate.reset();
    EXPECT_THAT(takeCalls(), IsEmpty());
}

TEST_F(StatusMenuTest, SpeaksTheLanguageOfTheSystem) {
    fakes.locale.language = "fr";
    launch();
    fakes.statusBar.click(rightClick);
    EXPECT_EQ(titles().at(5), "Quitter");
    EXPECT_EQ(fakes.statusBar.menus.at(0).lang, "fr");
    EXPECT_FALSE(fakes.statusBar.menus.at(0).isRightToLeft);
}

TEST_F(StatusMenuTest, RunsFromRightToLeftInArabicOnly) {
    for (const auto* const language : {"en", "es", "zh", "hi", "ar", "pt", "fr", "ru"}) {
        EXPECT_EQ(CurtainCore::Localizer::isRightToLeft(language), std::string(language) == "ar") << language;
    }
}

TEST_F(StatusMenuTest, SpeaksEnglishForALanguageWithoutTexts) {
    fakes.locale.language = "de";
    launch();
    fakes.statusBar.click(rightClick);
    EXPECT_EQ(titles().at(5), "Quit");
}

TEST_F(StatusMenuTest, SpeaksTheChosenLanguageAtOnce) {
    fakes.locale.language = "fr";
    launch();
    choose(CurtainCore::AppLanguage::ar);
    fakes.statusBar.click(rightClick);
    EXPECT_EQ(titles().at(5), Curtain::PlatformWording::string(CurtainCore::LocKey::quit, "ar"));
    EXPECT_TRUE(fakes.statusBar.menus.at(0).isRightToLeft);
}

TEST_F(AppDelegateTest, TakenShortcutIsSaidAndTheProgramLivesOn) {
    fakes.hotKeyService.status = Platform::hotKeyExists;
    launch();
    EXPECT_THAT(fakes.log.lines, ElementsAre("Error registering hotkey Ctrl+Alt+Super+H: -9878"));
    EXPECT_EQ(fakes.statusBar.items, 1);
}

} // namespace
