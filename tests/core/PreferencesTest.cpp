#include "core/Preferences.h"
#include "core/PreferencesJson.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace {

using namespace CurtainCore;
using testing::ElementsAre;

Preferences everyFieldChanged() {
    return Preferences{{{"org.gnome.Maps", "Maps"}, {"galculator", "Calculator"}},
                       false,
                       AutoDetectMode::promptOnly,
                       {"one", "two"},
                       AppLanguage::hi,
                       false,
                       "camera 1",
                       false,
                       "microphone 1",
                       MicrophoneTestMode::liveMonitor,
                       false,
                       false,
                       false,
                       true,
                       false,
                       true,
                       true,
                       true};
}

TEST(Preferences, DefaultsAreThoseOfANewUser) {
    const Preferences preferences;
    EXPECT_TRUE(preferences.targetApps.empty());
    EXPECT_TRUE(preferences.autoDetectEnabled);
    EXPECT_EQ(preferences.autoDetectMode, AutoDetectMode::activateAndNotify);
    EXPECT_THAT(preferences.triggerBundleIDs,
                ElementsAre("us.zoom.xos", "com.microsoft.teams", "com.microsoft.teams2",
                            "com.cisco.webexmeetingsapp", "com.hnc.Discord", "com.apple.FaceTime",
                            "com.apple.QuickTimePlayerX", "com.obsproject.obs-studio"));
    EXPECT_EQ(preferences.language, AppLanguage::system);
    EXPECT_TRUE(preferences.showCameraPreview);
    EXPECT_FALSE(preferences.selectedCameraID);
    EXPECT_TRUE(preferences.showMicrophoneCheck);
    EXPECT_FALSE(preferences.selectedMicrophoneID);
    EXPECT_EQ(preferences.microphoneTestMode, MicrophoneTestMode::threeSecondPlayback);
    EXPECT_TRUE(preferences.checkDesktopFiles);
    EXPECT_TRUE(preferences.hideFinderWithFixEverything);
    EXPECT_TRUE(preferences.checkNotifications);
    EXPECT_FALSE(preferences.notificationsMarkedHandled);
    EXPECT_TRUE(preferences.showEmbarrassmentScore);
    EXPECT_FALSE(preferences.runTestShareModeOnOpen);
    EXPECT_FALSE(preferences.launchAtLogin);
    EXPECT_FALSE(preferences.hasOnboarded);
}

TEST(Preferences, IdentifiersOfPrivateAppsKeepTheirOrderAndTheirDuplicates) {
    Preferences preferences;
    preferences.targetApps = {{"b", "B"}, {"a", "A"}, {"b", "again"}};
    EXPECT_THAT(preferences.targetBundleIDs(), ElementsAre("b", "a", "b"));
}

TEST(TargetApp, IdentityIsTheIdentifierAlone) {
    const TargetApp first{"id", "One"};
    const TargetApp second{"id", "Two"};
    EXPECT_EQ(first.id(), second.id());
    EXPECT_NE(first, second);
}

TEST(RawValues, CasesComeInTheOrderOfThePicker) {
    std::vector<std::string_view> texts;
    for (const auto language : allCases<AppLanguage>()) {
        texts.push_back(rawValue(language));
    }
    EXPECT_THAT(texts, ElementsAre("system", "en", "es", "zh", "hi", "ar", "pt", "fr", "ru"));
    EXPECT_THAT(allCases<AutoDetectMode>(),
                ElementsAre(AutoDetectMode::activateAndNotify, AutoDetectMode::promptOnly));
    EXPECT_THAT(allCases<MicrophoneTestMode>(),
                ElementsAre(MicrophoneTestMode::threeSecondPlayback, MicrophoneTestMode::liveMonitor));
}

TEST(RawValues, MatchingIsExact) {
    EXPECT_EQ(fromRawValue<AppLanguage>("en"), AppLanguage::en);
    EXPECT_EQ(fromRawValue<AppLanguage>("EN"), std::nullopt);
    EXPECT_EQ(fromRawValue<AppLanguage>("de"), std::nullopt);
    EXPECT_EQ(fromRawValue<AppLanguage>(""), std::nullopt);
    EXPECT_EQ(fromRawValue<AutoDetectMode>("promptOnly"), AutoDetectMode::promptOnly);
    EXPECT_EQ(fromRawValue<MicrophoneTestMode>("liveMonitor"), MicrophoneTestMode::liveMonitor);
    EXPECT_EQ(fromRawValue<MicrophoneTestMode>("livemonitor"), std::nullopt);
}

TEST(PreferencesJson, AllEighteenKeysAreWritten) {
    const auto document = nlohmann::json::parse(encodePreferences(everyFieldChanged()).value());
    EXPECT_EQ(document, nlohmann::json::parse(R"({
        "targetApps": [{"bundleID": "org.gnome.Maps", "displayName": "Maps"},
                       {"bundleID": "galculator", "displayName": "Calculator"}],
        "autoDetectEnabled": false, "autoDetectMode": "promptOnly", "triggerBundleIDs": ["one", "two"],
        "language": "hi", "showCameraPreview": false, "selectedCameraID": "camera 1",
        "showMicrophoneCheck": false, "selectedMicrophoneID": "microphone 1", "microphoneTestMode": "liveMonitor",
        "checkDesktopFiles": false, "hideFinderWithFixEverything": false, "checkNotifications": false,
        "notificationsMarkedHandled": true, "showEmbarrassmentScore": false, "runTestShareModeOnOpen": true,
        "launchAtLogin": true, "hasOnboarded": true})"));
}

TEST(PreferencesJson, AbsentDevicesAreLeftOut) {
    const auto document = nlohmann::json::parse(encodePreferences({}).value());
    EXPECT_EQ(document.size(), 16U);
    EXPECT_FALSE(document.contains("selectedCameraID"));
    EXPECT_FALSE(document.contains("selectedMicrophoneID"));
}

TEST(PreferencesJson, RoundTripGivesAnEqualRecord) {
    for (const auto& preferences : {Preferences{}, everyFieldChanged()}) {
        EXPECT_EQ(decodePreferences(encodePreferences(preferences).value()), preferences);
    }
}

TEST(PreferencesJson, TextThatIsNotUnicodeIsNotEncoded) {
    Preferences preferences;
    preferences.selectedCameraID = "\xff\xfe";
    EXPECT_EQ(encodePreferences(preferences), std::nullopt);
}

TEST(PreferencesJson, MissingAndNullKeysTakeTheirDefaults) {
    EXPECT_EQ(decodePreferences("{}"), Preferences{});
    Preferences onboarded;
    onboarded.hasOnboarded = true;
    EXPECT_EQ(decodePreferences(R"({"hasOnboarded": true})"), onboarded);
    EXPECT_EQ(decodePreferences(R"({"hasOnboarded": true, "targetApps": null, "triggerBundleIDs": null,
                                    "language": null, "autoDetectEnabled": null, "selectedCameraID": null})"),
              onboarded);
}

TEST(PreferencesJson, UnknownKeysAreIgnored) {
    EXPECT_EQ(decodePreferences(R"({"addedByALaterVersion": [1, 2]})"), Preferences{});
}

TEST(PreferencesJson, AnEmptyTriggerListStaysEmpty) {
    EXPECT_TRUE(decodePreferences(R"({"triggerBundleIDs": []})").value().triggerBundleIDs.empty());
}

class BadDocument : public testing::TestWithParam<const char*> {};

TEST_P(BadDocument, IsRefusedAsAWhole) {
    EXPECT_EQ(decodePreferences(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    PreferencesJson, BadDocument,
    testing::Values("", "   ", "no json", "{", "null", "[]", "3", "\"text\"",
                    R"({"hasOnboarded": true} trailing)", R"({"language": "de"})", R"({"language": "EN"})",
                    R"({"language": 1})", R"({"autoDetectMode": "sometimes"})",
                    R"({"microphoneTestMode": false})", R"({"autoDetectEnabled": 1})",
                    R"({"autoDetectEnabled": "true"})", R"({"hasOnboarded": 0})", R"({"targetApps": {}})",
                    R"({"targetApps": "org.gnome.Maps"})", R"({"targetApps": [null]})",
                    R"({"targetApps": [{"bundleID": "a"}]})", R"({"targetApps": [{"displayName": "a"}]})",
                    R"({"targetApps": [{"bundleID": "a", "displayName": null}]})",
                    R"({"targetApps": [{"bundleID": 7, "displayName": "a"}]})",
                    R"({"targetApps": [{"bundleID": "a", "displayName": "A"}, {"bundleID": "b"}]})",
                    R"({"triggerBundleIDs": ["a", 2]})", R"({"triggerBundleIDs": ["a", null]})",
                    R"({"selectedCameraID": 5})", R"({"selectedMicrophoneID": []})",
                    "{\"selectedCameraID\": \"\xff\"}"));

TEST(PreferencesJson, DeepNestingIsRefusedWithoutACrash) {
    EXPECT_EQ(decodePreferences(std::string(200'000, '[')), std::nullopt);
    const std::string nested = std::string(200'000, '[') + std::string(200'000, ']');
    EXPECT_EQ(decodePreferences(R"({"later": )" + nested + "}"), Preferences{});
}

} // namespace
