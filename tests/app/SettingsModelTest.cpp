#include "Curtain/SettingsModel.h"

#include "tests/support/FakeLoginItem.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

namespace {

using Curtain::CatalogEntry;
using Curtain::SettingsModel;
using CurtainCore::AppLanguage;
using CurtainCore::MicrophoneTestMode;
using CurtainCore::Preferences;
using CurtainCore::TargetApp;
using testing::ElementsAre;
using testing::IsEmpty;

const CatalogEntry maps{"org.maps", "Maps"};
const CatalogEntry notes{"org.notes", "Notes"};

struct SettingsModelTest : testing::Test {
    TestSupport::MemoryUserDefaults defaults;
    CurtainCore::PreferencesStore store{defaults};
    TestSupport::FakeLocale locale;
    TestSupport::FakeLoginItem loginItem;
    TestSupport::RecordingLog log;
    int changes = 0;

    SettingsModel& model() {
        if (!model_) {
            model_ = std::make_unique<SettingsModel>(store, locale, loginItem, log);
            QObject::connect(model_.get(), &SettingsModel::prefsChanged, [this] { ++changes; });
        }
        return *model_;
    }

    void storeElsewhere(const std::function<void(Preferences&)>& change) {
        auto prefs = store.load();
        change(prefs);
        store.save(prefs);
    }

private:
    std::unique_ptr<SettingsModel> model_;
};

TEST_F(SettingsModelTest, BeginsWithWhatIsStored) {
    storeElsewhere([](auto& prefs) { prefs.showEmbarrassmentScore = false; });
    EXPECT_FALSE(model().prefs().showEmbarrassmentScore);
    EXPECT_EQ(defaults.writes, 1);
}

TEST_F(SettingsModelTest, EveryChangeIsSavedAtOnceAsTheWholeRecord) {
    model().set(&Preferences::showEmbarrassmentScore, false);
    EXPECT_EQ(defaults.writes, 1);
    EXPECT_EQ(changes, 1);
    Preferences expected;
    expected.showEmbarrassmentScore = false;
    EXPECT_EQ(store.load(), expected);

    model().set(&Preferences::language, AppLanguage::hi);
    model().set(&Preferences::microphoneTestMode, MicrophoneTestMode::liveMonitor);
    model().set(&Preferences::selectedCameraID, "front");
    expected.language = AppLanguage::hi;
    expected.microphoneTestMode = MicrophoneTestMode::liveMonitor;
    expected.selectedCameraID = "front";
    EXPECT_EQ(store.load(), expected);
    EXPECT_EQ(model().prefs(), expected);
    EXPECT_EQ(changes, 4);
}

TEST_F(SettingsModelTest, AnEditMadeElsewhereIsNotOverwritten) {
    model();
    storeElsewhere([](auto& prefs) { prefs.targetApps = {{"org.notes", "Notes"}}; });
    model().set(&Preferences::checkNotifications, false);
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"org.notes", "Notes"}));
    storeElsewhere([](auto& prefs) { prefs.selectedCameraID = "front"; });
    model().toggle(maps);
    EXPECT_EQ(store.load().selectedCameraID, "front");
    EXPECT_FALSE(store.load().checkNotifications);
    storeElsewhere([](auto& prefs) { prefs.hasOnboarded = true; });
    model().setLaunchAtLogin(true);
    EXPECT_TRUE(store.load().hasOnboarded);
}

TEST_F(SettingsModelTest, ReloadTakesOverWhatOthersStoredAndSaysSoOnce) {
    model();
    model().reload();
    EXPECT_EQ(changes, 0);
    storeElsewhere([](auto& prefs) { prefs.language = AppLanguage::fr; });
    EXPECT_EQ(model().lang(), "en");
    model().reload();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(model().lang(), "fr");
}

TEST_F(SettingsModelTest, ADamagedFileGivesTheDefaultsAndIsKeptWhenSomethingIsSaved) {
    model().set(&Preferences::showEmbarrassmentScore, false);
    defaults.values["curtain.preferences.v1"] = "{\"targetApps\": 7";
    model().reload();
    EXPECT_EQ(model().prefs(), Preferences());
    model().toggle(maps);
    EXPECT_THAT(defaults.copies, ElementsAre("{\"targetApps\": 7"));
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"org.maps", "Maps"}));
}

TEST_F(SettingsModelTest, LanguageIsTheChoiceAndOtherwiseThatOfTheSystem) {
    locale.language = "ru";
    EXPECT_EQ(model().lang(), "ru");
    model().set(&Preferences::language, AppLanguage::ar);
    EXPECT_EQ(model().lang(), "ar");
    model().set(&Preferences::language, AppLanguage::system);
    EXPECT_EQ(model().lang(), "ru");
    locale.language = "xx";
    EXPECT_EQ(model().lang(), "en");
}

TEST_F(SettingsModelTest, SelectingAppendsAndDeselectingRemoves) {
    EXPECT_FALSE(model().isSelected(maps));
    model().toggle(maps);
    model().toggle(notes);
    EXPECT_TRUE(model().isSelected(maps));
    EXPECT_THAT(store.load().targetApps,
                ElementsAre(TargetApp{"org.maps", "Maps"}, TargetApp{"org.notes", "Notes"}));
    model().toggle(maps);
    EXPECT_FALSE(model().isSelected(maps));
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"org.notes", "Notes"}));
}

TEST_F(SettingsModelTest, DeselectingRemovesDuplicates) {
    storeElsewhere([](auto& prefs) {
        prefs.targetApps = {{"org.maps", "Maps"}, {"org.notes", "Notes"}, {"org.maps", "Old name"}};
    });
    EXPECT_TRUE(model().isSelected({"org.maps", "Another name"}));
    model().toggle(maps);
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"org.notes", "Notes"}));
}

TEST_F(SettingsModelTest, TogglingDoesWhatTheUserSawWhenOthersWereFaster) {
    model().toggle(maps);
    storeElsewhere([](auto& prefs) { prefs.targetApps.clear(); });
    model().toggle(maps);
    EXPECT_THAT(store.load().targetApps, IsEmpty());
    storeElsewhere([](auto& prefs) { prefs.targetApps = {{"org.maps", "Maps"}}; });
    model().toggle(maps);
    EXPECT_THAT(store.load().targetApps, ElementsAre(TargetApp{"org.maps", "Maps"}));
}

TEST_F(SettingsModelTest, LaunchAtLoginRegistersAndUnregisters) {
    model().setLaunchAtLogin(true);
    EXPECT_TRUE(store.load().launchAtLogin);
    model().setLaunchAtLogin(false);
    EXPECT_FALSE(store.load().launchAtLogin);
    EXPECT_THAT(loginItem.calls, ElementsAre("register", "unregister"));
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(SettingsModelTest, ALaunchThatTheDesktopHasSwitchedOffIsKnownAndWonBack) {
    loginItem.isOff = true;
    EXPECT_FALSE(model().isLaunchSwitchedOff()) << "nobody wants it on";
    model().setLaunchAtLogin(true);
    EXPECT_TRUE(model().isLaunchSwitchedOff());
    loginItem.calls.clear();
    loginItem.error = "Read-only file system";
    model().launchAllTheSame();
    EXPECT_TRUE(model().isLaunchSwitchedOff());
    EXPECT_THAT(log.lines, testing::Contains("Curtain SMAppService: Read-only file system"));
    loginItem.error.reset();
    model().launchAllTheSame();
    EXPECT_THAT(loginItem.calls, ElementsAre("register anew", "register anew"));
    EXPECT_FALSE(model().isLaunchSwitchedOff());
    EXPECT_TRUE(store.load().launchAtLogin);
}

TEST_F(SettingsModelTest, WhetherTheDesktopHasSwitchedTheLaunchOffIsAskedWhereItIsReloaded) {
    model().setLaunchAtLogin(true);
    changes = 0;
    loginItem.isOff = true;
    EXPECT_FALSE(model().isLaunchSwitchedOff()) << "it is read from a file, not at every look";
    model().reload();
    EXPECT_TRUE(model().isLaunchSwitchedOff());
    EXPECT_EQ(changes, 1);
}

TEST_F(SettingsModelTest, WhereItIsNotKnownWhetherTheLaunchIsSwitchedOffTheLastAnswerHolds) {
    loginItem.isOff = true;
    model().setLaunchAtLogin(true);
    changes = 0;
    loginItem.isOff.reset();
    model().reload();
    EXPECT_TRUE(model().isLaunchSwitchedOff());
    EXPECT_EQ(changes, 0);
    model().setLaunchAtLogin(true);
    EXPECT_TRUE(model().isLaunchSwitchedOff());
    loginItem.isOff = false;
    model().reload();
    EXPECT_FALSE(model().isLaunchSwitchedOff());
}

TEST_F(SettingsModelTest, AFailingLoginServiceIsSaidAndTheWishIsKept) {
    loginItem.error = "Operation not permitted";
    model().setLaunchAtLogin(true);
    EXPECT_TRUE(model().prefs().launchAtLogin);
    EXPECT_TRUE(store.load().launchAtLogin);
    EXPECT_THAT(log.lines, ElementsAre("Curtain SMAppService: Operation not permitted"));
    model().setLaunchAtLogin(false);
    EXPECT_FALSE(store.load().launchAtLogin);
    EXPECT_THAT(log.lines, testing::SizeIs(2));
}

} // namespace
