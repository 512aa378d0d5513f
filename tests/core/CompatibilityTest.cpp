#include "core/Compatibility.h"

#include <gmock/gmock.h>

#include <array>
#include <limits>
#include <utility>

namespace {

using namespace CurtainCore;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST(CompatibilityChecker, TheSystemsMajorVersionDecides) {
    constexpr auto expectations = std::to_array<std::pair<int, bool>>({
        {std::numeric_limits<int>::min(), false},
        {-14, false},
        {0, false},
        {13, false},
        {14, true},
        {15, true},
        {std::numeric_limits<int>::max(), true},
    });
    for (const auto& [version, supported] : expectations) {
        const auto result = CompatibilityChecker::evaluate({version, true, true, {"Zoom"}});
        EXPECT_EQ(result.osSupported, supported) << version;
        EXPECT_EQ(result.isCompatible(), supported) << version;
    }
    EXPECT_EQ(CompatibilityChecker::minimumMajorVersion, 14);
}

TEST(CompatibilityChecker, MissingDevicesAndAppsDoNotMatter) {
    const auto result = CompatibilityChecker::evaluate({14, false, false, {}});
    EXPECT_EQ(result, (CompatibilityResult{true, false, false, {}}));
    EXPECT_TRUE(result.isCompatible());
}

TEST(CompatibilityChecker, DevicesAndAppsAreCopied) {
    EXPECT_EQ(CompatibilityChecker::evaluate({13, true, false, {"Zoom", "Meet"}}),
              (CompatibilityResult{false, true, false, {"Zoom", "Meet"}}));
    EXPECT_EQ(CompatibilityChecker::evaluate({14, false, true, {"", "Zoom", "Zoom"}}),
              (CompatibilityResult{true, false, true, {"", "Zoom", "Zoom"}}));
}

TEST(CompatibilityResult, EqualityComparesEveryField) {
    const CompatibilityResult result{true, true, true, {"Zoom"}};
    EXPECT_EQ(result, (CompatibilityResult{true, true, true, {"Zoom"}}));
    EXPECT_NE(result, (CompatibilityResult{false, true, true, {"Zoom"}}));
    EXPECT_NE(result, (CompatibilityResult{true, false, true, {"Zoom"}}));
    EXPECT_NE(result, (CompatibilityResult{true, true, false, {"Zoom"}}));
    EXPECT_NE(result, (CompatibilityResult{true, true, true, {"Meet"}}));
}

MATCHER_P2(IsVideoApp, bundleID, displayName, "") {
    return arg.bundleID == bundleID && arg.displayName == displayName;
}

TEST(VideoApps, AreTheKnownOnes) {
    EXPECT_THAT(videoApps, UnorderedElementsAre(IsVideoApp("us.zoom.xos", "Zoom"),
                                                IsVideoApp("com.microsoft.teams", "Teams"),
                                                IsVideoApp("com.microsoft.teams2", "Teams"),
                                                IsVideoApp("com.cisco.webexmeetingsapp", "Webex"),
                                                IsVideoApp("com.hnc.Discord", "Discord"),
                                                IsVideoApp("com.apple.FaceTime", "FaceTime"),
                                                IsVideoApp("com.google.Chrome", "Meet")));
}

TEST(VideoApps, TwoIdentifiersOfOneAppGiveOneName) {
    const auto isTeams = [](std::string_view bundleID) {
        return bundleID == "com.microsoft.teams" || bundleID == "com.microsoft.teams2";
    };
    EXPECT_THAT(installedVideoAppNames(isTeams), ElementsAre("Teams"));
    EXPECT_THAT(
        installedVideoAppNames([](std::string_view bundleID) { return bundleID == "com.microsoft.teams2"; }),
        ElementsAre("Teams"));
}

TEST(VideoApps, NamesAreThoseOfTheInstalledApps) {
    EXPECT_THAT(installedVideoAppNames([](std::string_view) { return false; }), IsEmpty());
    EXPECT_THAT(installedVideoAppNames([](std::string_view) { return true; }),
                UnorderedElementsAre("Zoom", "Teams", "Webex", "Discord", "FaceTime", "Meet"));
    EXPECT_THAT(
        installedVideoAppNames([](std::string_view bundleID) { return bundleID == "com.google.Chrome"; }),
        ElementsAre("Meet"));
}

} // namespace
