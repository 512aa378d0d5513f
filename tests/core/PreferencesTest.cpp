#include "core/Preferences.h"
#include "core/PreferencesJson.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <string>
#include <vector>

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

/// A field, changed to something that no other field holds.
struct ChangedField {
    const char* key;
    /// What the document holds under the key.
    const char* value;
    std::function<void(Preferences&)> change;

    Preferences record() const {
        Preferences preferences;
        change(preferences);
        return preferences;
    }
};

const std::vector<ChangedField> changedFields{
    {"targetApps", R"([{"bundleID": "the identifier", "displayName": "the name"}])",
     [](auto& record) {
         record.targetApps = {{"the identifier", "the name"}};
     }},
    {"autoDetectEnabled", "false", [](auto& record) { record.autoDetectEnabled = false; }},
    {"autoDetectMode", R"("promptOnly")",
     [](auto& record) { record.autoDetectMode = AutoDetectMode::promptOnly; }},
    {"triggerBundleIDs", R"(["a trigger"])", [](auto& record) { record.triggerBundleIDs = {"a trigger"}; }},
    {"language", R"("pt")", [](auto& record) { record.language = AppLanguage::pt; }},
    {"showCameraPreview", "false", [](auto& record) { record.showCameraPreview = false; }},
    {"selectedCameraID", R"("the camera")", [](auto& record) { record.selectedCameraID = "the camera"; }},
    {"showMicrophoneCheck", "false", [](auto& record) { record.showMicrophoneCheck = false; }},
    {"selectedMicrophoneID", R"("the microphone")",
     [](auto& record) { record.selectedMicrophoneID = "the microphone"; }},
    {"microphoneTestMode", R"("liveMonitor")",
     [](auto& record) { record.microphoneTestMode = MicrophoneTestMode::liveMonitor; }},
    {"checkDesktopFiles", "false", [](auto& record) { record.checkDesktopFiles = false; }},
    {"hideFinderWithFixEverything", "false",
     [](auto& record) { record.hideFinderWithFixEverything = false; }},
    {"checkNotifications", "false", [](auto& record) { record.checkNotifications = false; }},
    {"notificationsMarkedHandled", "true", [](auto& record) { record.notificationsMarkedHandled = true; }},
    {"showEmbarrassmentScore", "false", [](auto& record) { record.showEmbarrassmentScore = false; }},
    {"runTestShareModeOnOpen", "true", [](auto& record) { record.runTestShareModeOnOpen = true; }},
    {"launchAtLogin", "true", [](auto& record) { record.launchAtLogin = true; }},
    {"hasOnboarded", "true", [](auto& record) { record.hasOnboarded = true; }},
};

/// Each of the eighteen alone: two keys that are exchanged for each other are noticed.
class EveryKey : public testing::TestWithParam<ChangedField> {};

TEST_P(EveryKey, AloneChangesItsFieldAlone) {
    const auto& field = GetParam();
    EXPECT_EQ(decodePreferences(R"({")" + std::string(field.key) + R"(": )" + field.value + "}"),
              field.record());
}

TEST_P(EveryKey, HoldsItsFieldAlone) {
    const auto& field = GetParam();
    auto expected = nlohmann::json::parse(encodePreferences({}).value());
    expected[field.key] = nlohmann::json::parse(field.value);
    EXPECT_EQ(nlohmann::json::parse(encodePreferences(field.record()).value()), expected);
}

TEST_P(EveryKey, MayBeNull) {
    EXPECT_EQ(decodePreferences(R"({")" + std::string(GetParam().key) + R"(": null})"), Preferences{});
}

TEST_P(EveryKey, WithTheWrongTypeFailsAsAWhole) {
    // No field holds a number, and none an object.
    for (const auto* const wrong : {"1", "0", "{}", "1.5", "{\"true\": true}"}) {
        EXPECT_EQ(decodePreferences(R"({")" + std::string(GetParam().key) + R"(": )" + wrong + "}"),
                  std::nullopt)
            << wrong;
    }
    const bool isSwitch = GetParam().value == std::string("true") || GetParam().value == std::string("false");
    EXPECT_EQ(decodePreferences(R"({")" + std::string(GetParam().key) + R"(": )" +
                                (isSwitch ? "\"true\"" : "true") + "}"),
              std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(PreferencesJson, EveryKey, testing::ValuesIn(changedFields),
                         [](const auto& tested) { return std::string(tested.param.key); });

TEST(PreferencesJson, ThereAreEighteenKeys) {
    EXPECT_EQ(changedFields.size(), 18U);
    EXPECT_EQ(nlohmann::json::parse(encodePreferences(everyFieldChanged()).value()).size(), 18U);
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

struct UnknownValue : testing::TestWithParam<const char*> {};

TEST_P(UnknownValue, DiscardsNothing) {
    Preferences onboarded;
    onboarded.hasOnboarded = true;
    const std::string value = GetParam();
    EXPECT_EQ(decodePreferences(R"({"later": )" + value + R"(, "hasOnboarded": true})"), onboarded);
    EXPECT_EQ(decodePreferences(R"({"hasOnboarded": true, "later": [{"deeper": [)" + value + "]}]}"),
              onboarded);
}

TEST_P(UnknownValue, IsStillTheWrongTypeUnderAKnownKey) {
    for (const auto* const key : {"hasOnboarded", "language", "selectedCameraID", "targetApps"}) {
        EXPECT_EQ(decodePreferences(R"({")" + std::string(key) + R"(": )" + GetParam() + "}"), std::nullopt)
            << key;
    }
    for (const auto* const list : {"targetApps", "triggerBundleIDs"}) {
        EXPECT_EQ(decodePreferences(R"({")" + std::string(list) + R"(": [)" + GetParam() + "]}"),
                  std::nullopt)
            << list;
    }
    EXPECT_EQ(decodePreferences(R"({"targetApps": [{"bundleID": "a", "displayName": )" +
                                std::string(GetParam()) + "}]}"),
              std::nullopt);
}

const std::string manyDigits(400, '7');
const std::string manyNegativeDigits = "-" + manyDigits;
const std::string manyDecimals = "0." + std::string(400, '0') + "1";

INSTANTIATE_TEST_SUITE_P(PreferencesJson, UnknownValue,
                         testing::Values("1e999", "-1e999", "1E+999", "1.5e999", "1e-999",
                                         "1e99999999999999999999", manyDigits.c_str(),
                                         manyNegativeDigits.c_str(), manyDecimals.c_str(), R"("\ud800")",
                                         R"("\udc00")", R"("\uDBFF and more")", R"("\udc00\ud800")",
                                         R"("\ud800\ud800\udc00")", R"("\\\ud800")",
                                         R"("quoted \"\ud800\" text")", "18446744073709551616"));

TEST(PreferencesJson, TheNameOfAnUnknownKeyMayBeAnyText) {
    Preferences onboarded;
    onboarded.hasOnboarded = true;
    for (const auto* const name : {R"("\ud800")", R"("\ud800" )", R"("hasOnboarded\udc00")", R"("")"}) {
        EXPECT_EQ(decodePreferences("{" + std::string(name) + R"(: false, "hasOnboarded": true})"), onboarded)
            << name;
    }
}

TEST(PreferencesJson, WholeCharactersStayAsTheyAre) {
    Preferences expected;
    expected.selectedCameraID = "\xf0\x9f\x98\x80 \\ud800 \" 1e999";
    EXPECT_EQ(
        decodePreferences(R"({"later": "\ud800", "selectedCameraID": "\ud83d\ude00 \\ud800 \" 1e999"})"),
        expected);
}

TEST(PreferencesJson, ANulInATextIsKeptWhereItIsEscaped) {
    Preferences expected;
    expected.selectedCameraID = std::string("a\0b", 3);
    EXPECT_EQ(decodePreferences(R"({"selectedCameraID": "a\u0000b"})"), expected);
    EXPECT_EQ(decodePreferences(encodePreferences(expected).value()), expected);
}

TEST(PreferencesJson, ABytesOrderMarkMayStandBeforeTheDocument) {
    Preferences onboarded;
    onboarded.hasOnboarded = true;
    EXPECT_EQ(decodePreferences("\xef\xbb\xbf{\"hasOnboarded\": true}"), onboarded);
}

TEST(PreferencesJson, OfEqualKeysTheLastCounts) {
    Preferences onboarded;
    onboarded.hasOnboarded = true;
    EXPECT_EQ(decodePreferences(R"({"hasOnboarded": 1, "hasOnboarded": true})"), onboarded);
    EXPECT_EQ(decodePreferences(R"({"hasOnboarded": true, "hasOnboarded": 1})"), std::nullopt);
}

TEST(PreferencesJson, EmptyTextsAndEqualAppsAreKept) {
    Preferences expected;
    expected.targetApps = {{"", ""}, {"a", "A"}, {"a", "A"}, {"a", "again"}};
    EXPECT_EQ(decodePreferences(R"({"targetApps": [{"bundleID": "", "displayName": ""},
                                                   {"bundleID": "a", "displayName": "A", "more": 1},
                                                   {"bundleID": "a", "displayName": "A"},
                                                   {"bundleID": "a", "displayName": "again"}]})"),
              expected);
    EXPECT_EQ(decodePreferences(encodePreferences(expected).value()), expected);
}

TEST(PreferencesJson, BytesAfterAByteOfZeroAreNoJson) {
    using namespace std::string_literals;
    for (const auto& document :
         {"{\"hasOnboarded\":true}\0"s, "{\"hasOnboarded\":true}\0garbage not json {{{"s,
          "{\"hasOnboarded\":true}\0{\"language\":\"de\"}"s,
          "{\"hasOnboarded\":true}"s + std::string(4096, '\0'), "\0{\"hasOnboarded\":true}"s,
          "{\0\"hasOnboarded\":true}"s, std::string(10, '\0')}) {
        EXPECT_EQ(decodePreferences(document), std::nullopt) << testing::PrintToString(document);
    }
}

TEST(PreferencesJson, OtherEncodingsAreNoJson) {
    std::string littleEndian;
    std::string bigEndian;
    for (const char character : std::string(R"({"hasOnboarded":true})")) {
        littleEndian.append({character, '\0'});
        bigEndian.append({'\0', character});
    }
    for (const auto& document : {littleEndian, "\xff\xfe" + littleEndian, bigEndian, "\xfe\xff" + bigEndian,
                                 std::string("\xef\xbb{}"), std::string("\xef\xbb\xbf\xef\xbb\xbf{}"),
                                 std::string("\xef\xbb\xbf")}) {
        EXPECT_EQ(decodePreferences(document), std::nullopt) << testing::PrintToString(document);
    }
}

class BadDocument : public testing::TestWithParam<const char*> {};

TEST_P(BadDocument, IsRefusedAsAWhole) {
    EXPECT_EQ(decodePreferences(GetParam()), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    PreferencesJson, BadDocument,
    testing::Values(
        "", "   ", "no json", "{", "null", "[]", "3", "\"text\"", R"({"hasOnboarded": true} trailing)",
        R"({"language": "de"})", R"({"language": "EN"})", R"({"language": 1})",
        R"({"autoDetectMode": "sometimes"})", R"({"microphoneTestMode": false})",
        R"({"autoDetectEnabled": 1})", R"({"autoDetectEnabled": "true"})", R"({"hasOnboarded": 0})",
        R"({"targetApps": {}})", R"({"targetApps": "org.gnome.Maps"})", R"({"targetApps": [null]})",
        R"({"targetApps": [{"bundleID": "a"}]})", R"({"targetApps": [{"displayName": "a"}]})",
        R"({"targetApps": [{"bundleID": "a", "displayName": null}]})",
        R"({"targetApps": [{"bundleID": 7, "displayName": "a"}]})",
        R"({"targetApps": [{"bundleID": "a", "displayName": "A"}, {"bundleID": "b"}]})",
        R"({"triggerBundleIDs": ["a", 2]})", R"({"triggerBundleIDs": ["a", null]})",
        R"({"selectedCameraID": 5})", R"({"selectedMicrophoneID": []})", "{\"selectedCameraID\": \"\xff\"}",
        "{\"later\": \"\xff\"}", "{\"later\": \"\xed\xa0\x80\"}", "{\"later\": \"\xc0\x80\"}",
        "{\"later\": \"line\nbreak\"}", R"({"later": "\x"})", R"({"later": "\ud80"})",
        R"({"later": "\ud800 \x"})", "{\"later\": \"\\ud800 \xff\"}", R"({"later": "\ud800})",
        R"({"later": 01})", R"({"later": 01e999})", R"({"later": 1.e999})", R"({"later": +1e999})",
        R"({"later": 1e999 1e999})", R"({"later": 1e999e9})", R"({"later": .5})", R"({"later": NaN})",
        R"({"later": Infinity})", R"({"later": True})", R"({1e999: 1})", R"({"hasOnboarded": true,})",
        R"({'hasOnboarded': true})",
        R"(// a comment
                       {"hasOnboarded": true})",
        R"({"hasOnboarded": /* a comment */ true})", R"({"selectedCameraID": true})",
        R"({"selectedMicrophoneID": false})", R"({"selectedCameraID": {}})", "{\"hasOnboarded\": true}\f",
        "{\"hasOnboarded\": true}\xc2\xa0", R"({"hasOnboarded": true} {"hasOnboarded": true})"));

TEST(PreferencesJson, DeepNestingIsRefusedWithoutACrash) {
    EXPECT_EQ(decodePreferences(std::string(200'000, '[')), std::nullopt);
    const std::string nested = std::string(200'000, '[') + std::string(200'000, ']');
    EXPECT_EQ(decodePreferences(R"({"later": )" + nested + "}"), Preferences{});
}

} // namespace
