#include "core/Preferences.h"
#include "core/PreferencesJson.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using CurtainCore::AppLanguage;
using CurtainCore::AutoDetectMode;
using CurtainCore::decodePreferences;
using CurtainCore::encodePreferences;
using CurtainCore::MicrophoneTestMode;
using CurtainCore::Preferences;

/// What a user has set in every version: nothing as it is by default.
Preferences settingsOfAUser() {
    Preferences preferences;
    preferences.targetApps = {{"org.gnome.Maps", "Maps"}, {"galculator", "Calculator"}};
    preferences.autoDetectEnabled = false;
    preferences.autoDetectMode = AutoDetectMode::promptOnly;
    preferences.triggerBundleIDs = {"one", "two"};
    preferences.language = AppLanguage::hi;
    preferences.showCameraPreview = false;
    preferences.selectedCameraID = "camera 1";
    preferences.showMicrophoneCheck = false;
    preferences.selectedMicrophoneID = "microphone 1";
    preferences.microphoneTestMode = MicrophoneTestMode::liveMonitor;
    preferences.checkDesktopFiles = false;
    preferences.hideFinderWithFixEverything = false;
    preferences.checkNotifications = false;
    preferences.notificationsMarkedHandled = true;
    preferences.showEmbarrassmentScore = false;
    preferences.runTestShareModeOnOpen = true;
    preferences.launchAtLogin = true;
    preferences.hasOnboarded = true;
    return preferences;
}

std::string contentsOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> versions() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(SETTINGS_FOLDER)) {
        names.push_back(entry.path().filename());
    }
    return names;
}

class SettingsOf : public testing::TestWithParam<std::string> {};

TEST_P(SettingsOf, AreRead) {
    const auto preferences =
        decodePreferences(contentsOf(std::filesystem::path(SETTINGS_FOLDER) / GetParam()));
    ASSERT_TRUE(preferences);
    EXPECT_EQ(*preferences, settingsOfAUser());
}

INSTANTIATE_TEST_SUITE_P(EveryVersion, SettingsOf, testing::ValuesIn(versions()),
                         [](const auto& chosen) { return testing::PrintToString(chosen.index); });

TEST(SettingsOfThisVersion, AreKeptForThoseToCome) {
    EXPECT_EQ(contentsOf(std::filesystem::path(SETTINGS_FOLDER) / (CURTAIN_VERSION ".json")),
              encodePreferences(settingsOfAUser()));
}

} // namespace
