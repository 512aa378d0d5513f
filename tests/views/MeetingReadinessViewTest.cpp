#include "Curtain/MeetingReadinessView.h"

#include "Curtain/ViewText.h"
#include "tests/views/ReadinessWorld.h"
#include "tests/views/ViewFixture.h"

#include <QVariantMap>

namespace TestSupport {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class ReadinessView : public ViewTest {
protected:
    ReadinessWorld world;

    Curtain::MeetingReadinessView& view() { return world.view ? *world.view : world.makeView(); }

    static QStringList names(QObject* list) {
        QStringList all;
        for (const auto& row : static_cast<Curtain::AppListModel*>(list)->rows()) {
            all.push_back(row.kind == Curtain::AppListRow::Kind::divider
                              ? QStringLiteral("-")
                              : QString::fromStdString(row.app.name));
        }
        return all;
    }
};

TEST_F(ReadinessView, KnowsNothingBeforeTheFirstRefresh) {
    for (const auto& status : {view().cameraStatus(), view().microphoneStatus(), view().notificationsStatus(),
                               view().desktopStatus(), view().privateAppsStatus()}) {
        EXPECT_EQ(status, "unknown");
    }
    EXPECT_EQ(view().cameraDetail(), "Not checked yet");
    EXPECT_EQ(view().microphoneDetail(), "Not checked yet");
    EXPECT_EQ(view().notificationsDetail(), "Not checked yet");
    EXPECT_EQ(view().desktopDetail(), "0 files on desktop");
    EXPECT_EQ(view().privateAppsDetail(), "0 visible");
    EXPECT_EQ(view().capsuleText(), "Ready for your call?");
    EXPECT_EQ(view().capsuleTone(), "gray");
    EXPECT_FALSE(view().isReady());
}

TEST_F(ReadinessView, SaysHowTheCameraStands) {
    world.cameraReadiness = {true, true};
    world.coordinator.refresh();
    EXPECT_EQ(view().cameraStatus(), "ok");
    EXPECT_EQ(view().cameraDetail(), "Looks good");
    world.cameraReadiness = {true, false};
    world.coordinator.refresh();
    EXPECT_EQ(view().cameraStatus(), "danger");
    EXPECT_EQ(view().cameraDetail(), "Needs attention");
}

TEST_F(ReadinessView, SaysHowTheNotificationsStand) {
    world.coordinator.refresh();
    EXPECT_EQ(view().notificationsStatus(), "warning");
    EXPECT_EQ(view().notificationsDetail(), "Notifications may appear");
    world.change([](auto& preferences) { preferences.notificationsMarkedHandled = true; });
    world.coordinator.refresh();
    EXPECT_EQ(view().notificationsStatus(), "ok");
    EXPECT_EQ(view().notificationsDetail(), "Notifications already handled");
}

TEST_F(ReadinessView, SaysHowTheDesktopStands) {
    world.putOnDesktop(12);
    world.coordinator.refresh();
    EXPECT_EQ(view().desktopStatus(), "warning");
    EXPECT_EQ(view().desktopDetail(), "12 files on desktop");
    EXPECT_FALSE(view().isDesktopHidden());
    world.runner.setting = "0\n";
    world.coordinator.refresh();
    EXPECT_EQ(view().desktopStatus(), "ok");
    EXPECT_EQ(view().desktopDetail(), "Desktop hidden");
    EXPECT_TRUE(view().isDesktopHidden());
}

TEST_F(ReadinessView, CountsAMillionFiles) {
    world.putOnDesktop(1'000'000);
    world.coordinator.refresh();
    EXPECT_EQ(view().desktopDetail(), "1000000 files on desktop");
}

TEST_F(ReadinessView, SaysHowThePrivateAppsStand) {
    world.setPrivateApps({{"a", "A"}, {"b", "B"}, {"c", "C"}});
    world.workspace.run("a");
    world.workspace.run("b").hidden = true;
    world.coordinator.refresh();
    EXPECT_EQ(view().privateAppsStatus(), "danger");
    EXPECT_EQ(view().privateAppsDetail(), "1 visible");
    EXPECT_EQ(view().visibilities(), QStringList({"visible", "hidden", "notRunning"}));
    world.workspace.quitAll();
    world.coordinator.refresh();
    EXPECT_EQ(view().privateAppsStatus(), "ok");
    EXPECT_EQ(view().privateAppsDetail(), "You're ready.");
    EXPECT_EQ(view().visibilities(), QStringList({"notRunning"}));
}

TEST_F(ReadinessView, SaysWhichPrivateAppIsCertainlyNoLongerInstalled) {
    world.setPrivateApps({{"gone", "Old Chat"}, {"mail", "Mail"}});
    world.files.goneApps = {"gone"};
    world.coordinator.refresh();
    EXPECT_EQ(view().visibilities(), QStringList({"notRunning", "notInstalled"}));
    EXPECT_EQ(view().privateAppsStatus(), "ok");
    world.workspace.run("gone");
    world.coordinator.refresh();
    EXPECT_EQ(view().visibilities(), QStringList({"visible", "notRunning"})) << "it runs on";
    world.workspace.quitAll();
    world.workspace.everyWindowIsKnown = false;
    world.coordinator.refresh();
    EXPECT_EQ(view().visibilities(), QStringList("cannotTell"));
}

TEST_F(ReadinessView, WithoutPrivateAppsTheirRowIsReady) {
    world.coordinator.refresh();
    EXPECT_FALSE(view().hasPrivateApps());
    EXPECT_EQ(view().privateAppsDetail(), "You're ready.");
}

TEST_F(ReadinessView, TheMicrophoneSpeaksForItself) {
    const auto says = [&](const char* status, const char* detail) {
        EXPECT_EQ(view().microphoneStatus(), status);
        EXPECT_EQ(view().microphoneDetail(), detail);
    };
    world.startMicrophone();
    says("unknown", "Say something…");
    world.speak(0.02F);
    says("ok", "Working");
    EXPECT_NEAR(view().microphoneLevel(), 0.4, 0.01);
    world.authorization.statuses[Platform::MediaType::audio] = Platform::AuthorizationStatus::denied;
    world.startMicrophone();
    says("danger", "Access denied");
    EXPECT_EQ(view().microphoneLevel(), 0);
}

TEST_F(ReadinessView, NamesTheMicrophoneThatIsHeard) {
    EXPECT_EQ(view().microphoneName(), "");
    int changes = 0;
    QObject::connect(&view(), &Curtain::MeetingReadinessView::microphoneChanged, [&] { ++changes; });
    world.audio.deviceName = "Headset";
    world.startMicrophone();
    EXPECT_EQ(view().microphoneName(), "Headset");
    EXPECT_GT(changes, 0);
}

TEST_F(ReadinessView, AMicrophoneThatIsNotThereIsRed) {
    world.audio.inputFormat = {0, 0};
    world.startMicrophone();
    EXPECT_EQ(view().microphoneStatus(), "danger");
    EXPECT_EQ(view().microphoneDetail(), "No input device");
}

TEST_F(ReadinessView, AMicrophoneThatDoesNotStartIsNotChecked) {
    world.audio.startError = "busy";
    world.startMicrophone();
    EXPECT_EQ(view().microphoneStatus(), "unknown");
    EXPECT_EQ(view().microphoneDetail(), "Not checked yet");
}

TEST_F(ReadinessView, TheLevelAloneTouchesNothingElse) {
    world.makeRisky();
    int levels = 0;
    int others = 0;
    QObject::connect(&view(), &Curtain::MeetingReadinessView::microphoneLevelChanged, [&] { ++levels; });
    QObject::connect(&view(), &Curtain::MeetingReadinessView::microphoneChanged, [&] { ++others; });
    QObject::connect(&view(), &Curtain::MeetingReadinessView::stateChanged, [&] { ++others; });
    for (int buffer = 1; buffer <= 10; ++buffer) {
        world.speak(0.02F + 0.001F * static_cast<float>(buffer));
    }
    EXPECT_GE(levels, 10);
    EXPECT_EQ(others, 0);
}

TEST_F(ReadinessView, TheEchoButtonFollowsItsPhase) {
    EXPECT_EQ(view().echoLabel(), "Record");
    world.startMicrophone();
    view().startEcho();
    world.runAll();
    EXPECT_EQ(view().echoLabel(), "Recording…");
    world.mainQueue.advance(4);
    world.runAll();
    EXPECT_EQ(view().echoLabel(), "Playing…");
    world.audio.finishPlaying(true);
    world.runAll();
    EXPECT_EQ(view().echoLabel(), "Record");
}

TEST_F(ReadinessView, RiskHasFourNamesAndThreeColours) {
    const auto expectRisk = [&](const char* label, const char* tone) {
        world.coordinator.refresh();
        EXPECT_EQ(view().riskLabel(), label);
        EXPECT_EQ(view().riskTone(), tone);
    };
    world.runner.setting = "0\n";
    world.change([](auto& preferences) { preferences.notificationsMarkedHandled = true; });
    world.isPrivacyModeActive = true;
    expectRisk("Low Risk", "green");
    world.isPrivacyModeActive = false;
    world.change([](auto& preferences) { preferences.notificationsMarkedHandled = false; });
    expectRisk("Medium Risk", "orange");
    world.setPrivateApps({{"a", "A"}, {"b", "B"}});
    world.workspace.run("a");
    expectRisk("High Risk", "orange");
    world.runner.setting.clear();
    world.putOnDesktop(1);
    world.cameraReadiness = {true, false};
    world.workspace.run("b");
    expectRisk("Very High Risk", "red");
}

TEST_F(ReadinessView, TheCapsuleSaysTheWorstThing) {
    world.makeRisky();
    EXPECT_EQ(view().capsuleText(), "Sharing now could expose private stuff.");
    EXPECT_EQ(view().capsuleTone(), "orange");
    world.workspace.quitAll();
    world.coordinator.refresh();
    EXPECT_EQ(view().capsuleText(), "A few things need attention.");
    EXPECT_EQ(view().capsuleTone(), "orange");
    world.runner.setting = "0\n";
    world.change([](auto& preferences) { preferences.notificationsMarkedHandled = true; });
    world.isPrivacyModeActive = true;
    world.coordinator.refresh();
    EXPECT_EQ(view().capsuleText(), "You're ready.");
    EXPECT_EQ(view().capsuleTone(), "green");
    world.cameraReadiness = {};
    world.coordinator.refresh();
    EXPECT_EQ(view().capsuleText(), "Ready for your call?");
    EXPECT_EQ(view().capsuleTone(), "gray");
    world.authorization.statuses[Platform::MediaType::audio] = Platform::AuthorizationStatus::denied;
    world.startMicrophone();
    EXPECT_EQ(view().capsuleText(), "A few things need attention.");
}

TEST_F(ReadinessView, TheBadgeNeedsACameraAndNothingAmiss) {
    world.makeClear();
    EXPECT_TRUE(view().isReady());
    world.speak(0);
    EXPECT_TRUE(view().isReady()) << "a silent microphone is no fault";
    world.setPrivateApps({{"org.app.Mail", "Mail"}});
    world.workspace.run("org.app.Mail");
    world.coordinator.refresh();
    EXPECT_FALSE(view().isReady());
    world.workspace.quitAll();
    world.coordinator.refresh();
    EXPECT_TRUE(view().isReady());
    world.capture.cameras.clear();
    world.camera.start(std::nullopt);
    world.runAll();
    EXPECT_FALSE(view().isReady());
}

TEST_F(ReadinessView, ListsTheIssuesInTheirOrder) {
    world.makeRisky();
    QStringList lines;
    for (const auto& issue : view().issues()) {
        lines.push_back(issue.toMap()["text"].toString() + ' ' + issue.toMap()["tone"].toString());
    }
    EXPECT_EQ(lines, QStringList({"Private apps red", "Desktop orange", "Notifications orange"}));
}

TEST_F(ReadinessView, HidesTheRiskWhereThePreferenceSaysSo) {
    EXPECT_TRUE(view().showsRisk());
    world.change([](auto& preferences) { preferences.showEmbarrassmentScore = false; });
    world.coordinator.refresh();
    EXPECT_FALSE(view().showsRisk());
}

TEST_F(ReadinessView, OpensThePanelOnEveryOpeningWhereThePreferenceSaysSo) {
    view().didOpen();
    EXPECT_FALSE(view().showingTestShare());
    world.change([](auto& preferences) { preferences.runTestShareModeOnOpen = true; });
    for (int opening = 0; opening < 2; ++opening) {
        view().didOpen();
        EXPECT_TRUE(view().showingTestShare());
        view().setShowingTestShare(false);
    }
}

TEST_F(ReadinessView, EveryActionReachesTheController) {
    view().fixEverything();
    view().hidePrivateApps();
    view().restore();
    view().toggleDesktop();
    view().selectCamera("desk");
    view().takePhoto();
    view().copyPhoto();
    view().savePhoto();
    view().openSettings();
    view().quit();
    EXPECT_THAT(world.actions, ElementsAre("fixEverything", "hidePrivateApps", "restore", "toggleDesktop",
                                           "selectCamera desk", "takePhoto", "copyPhoto", "savePhoto",
                                           "openSettings", "quit"));
}

TEST_F(ReadinessView, OpensTheSystemsSettings) {
    view().openCameraSettings();
    view().openFocus();
    EXPECT_THAT(world.urlOpener.opened,
                ElementsAre(Platform::SettingsLink::cameraPrivacy, Platform::SettingsLink::focus));
    EXPECT_EQ(view().cameraSettingsProblem(), "");
    EXPECT_EQ(view().focusProblem(), "");
    world.urlOpener.canOpen = false;
    view().openFocus();
    EXPECT_EQ(view().cameraSettingsProblem(), "");
    EXPECT_EQ(view().focusProblem(),
              "No matching settings page was found. Look in your desktop's menus or panel.");
    view().openCameraSettings();
    EXPECT_EQ(view().cameraSettingsProblem(),
              "No matching settings page was found. Look in your desktop's menus or panel.");
    EXPECT_EQ(view().focusProblem(), "");
    view().didOpen();
    EXPECT_EQ(view().cameraSettingsProblem(), "");
}

TEST_F(ReadinessView, ListsTheCamerasOfTheMoment) {
    world.startCamera();
    const auto lines = [&] {
        QStringList all;
        for (const auto& camera : view().cameras()) {
            const auto entry = camera.toMap();
            all.push_back(entry["id"].toString() + ' ' + entry["name"].toString() +
                          (entry["isActive"].toBool() ? " *" : ""));
        }
        return all;
    };
    EXPECT_EQ(lines(), QStringList({"front Integrated Camera *", "desk Desk View Camera"}));
    world.capture.cameras.clear();
    EXPECT_EQ(lines(), QStringList());
}

TEST_F(ReadinessView, PhotosComeAndGo) {
    world.startCamera();
    int photos = 0;
    QObject::connect(&view(), &Curtain::MeetingReadinessView::photoTaken, [&] { ++photos; });
    EXPECT_FALSE(view().hasPhoto());
    world.takePhoto();
    EXPECT_TRUE(view().hasPhoto());
    EXPECT_EQ(photos, 1);
    view().discardPhoto();
    EXPECT_FALSE(view().hasPhoto());
    EXPECT_EQ(photos, 1);
}

TEST_F(ReadinessView, ThePictureIsMirroredOnRequest) {
    const auto before = view().isMirrored();
    view().toggleMirrored();
    EXPECT_NE(view().isMirrored(), before);
}

TEST_F(ReadinessView, EditingOffersInstalledAndRunningAppsThatAreNotPrivate) {
    world.setPrivateApps({{"mail", "Mail"}});
    world.install("calendar", "Calendar");
    world.install("mail", "Mail");
    world.install("wallet", "Wallet");
    world.workspace.run("journal").name = "Journal";
    world.workspace.run("calendar").name = "Calendar";
    world.workspace.run("background").policy = Platform::ActivationPolicy::accessory;
    EXPECT_EQ(names(view().editedApps()), QStringList());
    view().setEditingApps(true);
    EXPECT_EQ(names(view().editedApps()), QStringList({"Mail", "-", "Calendar", "Journal", "Wallet"}));
    EXPECT_TRUE(view().isDivider(1));
    EXPECT_FALSE(view().isDivider(0));
    EXPECT_FALSE(view().isDivider(99));
    view().setAppQuery("WAL");
    EXPECT_EQ(names(view().editedApps()), QStringList({"Mail", "-", "Wallet"}));
    view().setAppQuery("");
    view().toggleApp("calendar");
    EXPECT_EQ(names(view().editedApps()), QStringList({"Mail", "Calendar", "-", "Journal", "Wallet"}));
    EXPECT_EQ(names(view().privateApps()), QStringList({"Mail", "Calendar"}));
    view().toggleApp("mail");
    EXPECT_THAT(world.store.load().targetApps, ElementsAre(CurtainCore::TargetApp{"calendar", "Calendar"}));
    view().toggleApp("no such app");
    EXPECT_THAT(world.store.load().targetApps, testing::SizeIs(1));
    view().toggleApp("");
    EXPECT_THAT(world.store.load().targetApps, testing::SizeIs(1)) << "the divider is no app";
    view().setEditingApps(false);
    EXPECT_EQ(view().appQuery(), "");
    EXPECT_EQ(names(view().editedApps()), QStringList());
}

TEST_F(ReadinessView, SearchIgnoresCaseAndAccents) {
    world.install("cafe", "Café Übersicht");
    world.install("other", "Other");
    view().setEditingApps(true);
    for (const auto* const query : {"cafe", "CAFÉ", " uber", "übers"}) {
        view().setAppQuery(query);
        EXPECT_EQ(names(view().editedApps()), QStringList({"Café Übersicht"})) << query;
    }
    for (const auto* const query : {"café u", "UBER"}) {
        view().setAppQuery(query);
        EXPECT_EQ(names(view().editedApps()), QStringList({"Café Übersicht"})) << query;
    }
    view().setAppQuery("othér");
    EXPECT_EQ(names(view().editedApps()), QStringList()) << "an accent that is typed is meant";
    view().setAppQuery("nothing like it");
    EXPECT_EQ(names(view().editedApps()), QStringList());
}

TEST_F(ReadinessView, SearchKnowsTheLettersOfTheUsersLanguage) {
    world.locale.language = "tr";
    world.install("isik", "Işık");
    view().setEditingApps(true);
    view().setAppQuery("IŞIK");
    EXPECT_EQ(names(view().editedApps()), QStringList({"Işık"}));
}

TEST_F(ReadinessView, ListsKeepTheirPlaceWhenOneAppChanges) {
    std::vector<CurtainCore::TargetApp> apps;
    for (int number = 0; number < 500; ++number) {
        apps.push_back({"app" + std::to_string(number), "App " + std::to_string(number)});
    }
    world.setPrivateApps(apps);
    world.coordinator.refresh();
    auto* const list = static_cast<Curtain::AppListModel*>(view().privateApps());
    int resets = 0;
    int changes = 0;
    int removals = 0;
    QObject::connect(list, &QAbstractItemModel::modelReset, [&] { ++resets; });
    QObject::connect(list, &QAbstractItemModel::dataChanged, [&] { ++changes; });
    QObject::connect(
        list, &QAbstractItemModel::rowsRemoved,
        [&](const QModelIndex& /*parent*/, int first, int last) { removals += last - first + 1; });
    world.coordinator.refresh();
    EXPECT_EQ(changes, 0);
    world.workspace.run("app250");
    world.coordinator.refresh();
    EXPECT_EQ(changes, 1);
    world.coordinator.toggleTargetApp({"app250", "App 250"});
    EXPECT_EQ(removals, 1);
    EXPECT_EQ(resets, 0);
    EXPECT_EQ(list->rowCount({}), 499);
}

TEST_F(ReadinessView, NamesFromOutsideAreOneShortLine) {
    using Curtain::shownName;
    EXPECT_EQ(shownName("a\nb\tc", "id"), "a b c");
    EXPECT_EQ(shownName("<b>bold</b> & more", "id"), "<b>bold</b> & more");
    EXPECT_EQ(shownName("\u202Egnp.exe\u2066", "id"), "gnp.exe");
    EXPECT_EQ(shownName("", "org.app"), "org.app");
    EXPECT_EQ(shownName(" \n\u202E ", "org.app"), "org.app");
    EXPECT_EQ(shownName(std::string(10'000, 'x'), "id").size(), 200);
    EXPECT_EQ(shownName("e\u0301", "id"), QString::fromUtf8("e\u0301"));
    std::string emoji;
    for (int number = 0; number < 300; ++number) {
        emoji += "\U0001F600";
    }
    const auto shown = shownName(emoji, "id");
    EXPECT_FALSE(shown.back().isHighSurrogate());
    EXPECT_EQ(shownName("\xFF\xFE", "id"), QString::fromUtf8("\uFFFD\uFFFD"));
}

TEST(ViewTexts, FollowTheLanguageByTheNamesOfTheirKeys) {
    Curtain::ViewTexts texts("en");
    EXPECT_EQ(texts.property("noSettingsPage").toString(),
              "No matching settings page was found. Look in your desktop's menus or panel.");
    EXPECT_EQ(texts.property("restore").toString(), "Restore");
    auto changes = 0;
    QObject::connect(&texts, &Curtain::ViewTexts::changed, &texts, [&] { ++changes; });
    texts.setLang("en");
    EXPECT_EQ(changes, 0);
    texts.setLang("fr");
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(texts.property("quit").toString(), "Quitter");
    EXPECT_FALSE(texts.property("noSuchText").isValid());
}

TEST_F(ReadinessView, SaysNowhereThatAllIsWellWherePrivateAppsCannotBeSeen) {
    world.makeClear();
    EXPECT_TRUE(view().isReady());
    world.workspace.everyWindowIsKnown = false;
    world.coordinator.refresh();
    EXPECT_EQ(view().privateAppsStatus(), "unknown");
    EXPECT_EQ(view().privateAppsDetail(), "Can't tell");
    EXPECT_EQ(view().visibilities(), QStringList("cannotTell"));
    EXPECT_EQ(view().capsuleText(), "Ready for your call?");
    EXPECT_EQ(view().capsuleTone(), "gray");
    EXPECT_FALSE(view().isReady());
    EXPECT_EQ(view().score(), 0);
    EXPECT_EQ(view().riskLabel(), "Can't tell");
    EXPECT_EQ(view().riskTone(), "gray");
    EXPECT_EQ(view().scoreGap(), "Private apps not counted");
    ASSERT_EQ(view().shareLines().size(), 1);
    EXPECT_EQ(view().shareLines()[0].toMap()["text"],
              "Curtain can't tell whether your private apps can be seen.");
    EXPECT_EQ(view().shareLines()[0].toMap()["tone"], "gray");
}

TEST_F(ReadinessView, ARiskThatIsThereWithoutThemKeepsItsName) {
    world.makeRisky();
    world.workspace.everyWindowIsKnown = false;
    world.coordinator.refresh();
    EXPECT_EQ(view().privateAppsStatus(), "danger");
    EXPECT_EQ(view().privateAppsDetail(), "2 visible");
    EXPECT_EQ(view().riskLabel(), "High Risk");
    EXPECT_EQ(view().riskTone(), "orange");
    EXPECT_EQ(view().scoreGap(), "Some private apps not counted");
    EXPECT_EQ(view().shareLines().size(), 4);
    EXPECT_EQ(view().issues().size(), 3);
}

TEST_F(ReadinessView, WithoutPrivateAppsNothingIsUnknown) {
    world.makeClear();
    world.setPrivateApps({});
    world.workspace.everyWindowIsKnown = false;
    world.coordinator.refresh();
    EXPECT_EQ(view().privateAppsDetail(), "You're ready.");
    EXPECT_EQ(view().scoreGap(), "");
    EXPECT_EQ(view().riskTone(), "green");
    EXPECT_TRUE(view().isReady());
}

TEST_F(ReadinessView, PrivacyModeInVainNeedsAttention) {
    world.makeClear();
    world.system.obstacle = Platform::HidingObstacle::windowManagerIgnoresHiding;
    world.coordinator.refresh();
    EXPECT_TRUE(view().isPrivacyModeInVain());
    EXPECT_EQ(view().capsuleTone(), "orange");
    EXPECT_EQ(view().capsuleText(), "A few things need attention.");
    EXPECT_FALSE(view().isReady());
    EXPECT_EQ(view().score(), 0) << "the mode counts as long as it is on";
    EXPECT_EQ(view().scoreGap(), "Privacy mode has no effect");
    ASSERT_EQ(view().shareLines().size(), 1);
    EXPECT_EQ(view().shareLines()[0].toMap()["key"], "privacyModeInVain");
    EXPECT_EQ(view().shareLines()[0].toMap()["text"], "Privacy mode has no effect");
    EXPECT_EQ(view().shareLines()[0].toMap()["tone"], "orange");
    world.isPrivacyModeActive = false;
    world.coordinator.refresh();
    EXPECT_FALSE(view().isPrivacyModeInVain());
    EXPECT_EQ(view().scoreGap(), "");
    EXPECT_EQ(view().hidingObstacle(),
              "The window manager of this session doesn't hide windows when it is asked to.");
    EXPECT_EQ(view().capsuleTone(), "gray");
}

TEST_F(ReadinessView, NothingIsReadyWhereNothingCouldBeHidden) {
    world.makeClear();
    world.isPrivacyModeActive = false;
    world.coordinator.refresh();
    ASSERT_TRUE(view().isReady());
    world.setPrivateApps({});
    for (const bool isKnown : {true, false}) {
        world.workspace.everyWindowIsKnown = isKnown;
        world.system.obstacle = Platform::HidingObstacle::waylandSession;
        world.coordinator.refresh();
        EXPECT_EQ(view().privateAppsStatus(), "unknown");
        EXPECT_EQ(view().privateAppsDetail(), isKnown ? "0 visible" : "Can't tell");
        EXPECT_EQ(view().capsuleTone(), "gray");
        EXPECT_EQ(view().capsuleText(), "Ready for your call?");
        EXPECT_FALSE(view().isReady());
        ASSERT_EQ(view().shareLines().size(), 1);
        EXPECT_EQ(view().shareLines()[0].toMap()["text"],
                  "This Wayland desktop offers no way to hide other apps.");
        EXPECT_EQ(view().shareLines()[0].toMap()["tone"], "gray");
    }
    // What is not known yet is no obstacle.
    world.workspace.everyWindowIsKnown = true;
    world.system.obstacle = Platform::HidingObstacle::notKnownYet;
    world.coordinator.refresh();
    EXPECT_EQ(view().privateAppsDetail(), "You're ready.");
}

TEST_F(ReadinessView, OffersToFixOnlyWhatCanBeFixed) {
    world.makeClear();
    world.isPrivacyModeActive = false;
    world.coordinator.refresh();
    EXPECT_TRUE(view().canHideApps());
    EXPECT_TRUE(view().canFix());
    world.system.obstacle = Platform::HidingObstacle::noWindowManager;
    EXPECT_FALSE(view().canHideApps());
    EXPECT_FALSE(view().canFix());
    world.change([](auto& preferences) { preferences.notificationsMarkedHandled = false; });
    world.coordinator.refresh();
    EXPECT_TRUE(view().canFix()) << "the notifications";
    world.makeRisky();
    world.runner.setting = "1\n";
    world.change([](auto& preferences) { preferences.notificationsMarkedHandled = true; });
    world.coordinator.refresh();
    EXPECT_TRUE(view().canFix()) << "the desktop";
    world.change([](auto& preferences) { preferences.hideFinderWithFixEverything = false; });
    EXPECT_FALSE(view().canFix()) << "the private apps alone";
    world.system.obstacle = Platform::HidingObstacle::notKnownYet;
    EXPECT_TRUE(view().canHideApps());
    EXPECT_TRUE(view().canFix());
}

} // namespace
} // namespace TestSupport
