#include "core/ReadinessChecklist.h"

#include <gmock/gmock.h>

#include <limits>
#include <unordered_map>

namespace {

using namespace CurtainCore;
using testing::ElementsAre;
using testing::IsEmpty;

ReadinessState build(const ReadinessInput& input) {
    return ReadinessChecklistEngine().build(input);
}

ReadinessInput allClear() {
    return {0, 0, NotificationStatus::protected_, true, true, true, true, true, false};
}

constexpr ReadinessIssue privateAppsIssue{LocKey::privateApps, ReadinessStatus::danger};
constexpr ReadinessIssue desktopIssue{LocKey::desktop, ReadinessStatus::warning};
constexpr ReadinessIssue notificationsIssue{LocKey::notifications, ReadinessStatus::warning};

TEST(ReadinessChecklist, AllClearIsOkInEveryRow) {
    EXPECT_EQ(build(allClear()), (ReadinessState{ReadinessStatus::ok,
                                                 ReadinessStatus::ok,
                                                 ReadinessStatus::ok,
                                                 ReadinessStatus::ok,
                                                 ReadinessStatus::ok,
                                                 0,
                                                 0,
                                                 RiskLevel::low,
                                                 {},
                                                 true,
                                                 false}));
}

TEST(ReadinessChecklist, BeforeAnythingIsMeasuredMostRowsAreUnknown) {
    EXPECT_EQ(build({}), (ReadinessState{ReadinessStatus::unknown,
                                         ReadinessStatus::unknown,
                                         ReadinessStatus::ok,
                                         ReadinessStatus::unknown,
                                         ReadinessStatus::ok,
                                         0,
                                         10,
                                         RiskLevel::low,
                                         {},
                                         false,
                                         false}));
}

TEST(ReadinessChecklist, EveryProblemAtOnce) {
    const ReadinessInput input{7, 12, NotificationStatus::mayAppear, true, false, true, false, false, false};
    EXPECT_EQ(build(input), (ReadinessState{ReadinessStatus::danger,
                                            ReadinessStatus::danger,
                                            ReadinessStatus::warning,
                                            ReadinessStatus::warning,
                                            ReadinessStatus::danger,
                                            12,
                                            100,
                                            RiskLevel::veryHigh,
                                            {privateAppsIssue, desktopIssue, notificationsIssue},
                                            false,
                                            false}));
}

TEST(ReadinessChecklist, VisiblePrivateAppsAreADanger) {
    auto input = allClear();
    input.privateAppsVisible = 3;
    const auto state = build(input);
    ASSERT_THAT(state.issues, ElementsAre(privateAppsIssue));
    EXPECT_EQ(state.issues.front().id(), "privateApps");
    EXPECT_EQ(state.privateApps, ReadinessStatus::danger);
    EXPECT_EQ(state.score, 45);
    EXPECT_EQ(state.risk, RiskLevel::medium);
}

TEST(ReadinessChecklist, OneOfAKindIsEnough) {
    auto input = allClear();
    input.privateAppsVisible = 1;
    input.desktopFileCount = 1;
    EXPECT_THAT(build(input).issues, ElementsAre(privateAppsIssue, desktopIssue));
    EXPECT_EQ(build(input).score, 25 + 15);
}

TEST(ReadinessChecklist, DesktopFilesAreAWarning) {
    auto input = allClear();
    input.desktopFileCount = 12;
    const auto state = build(input);
    ASSERT_THAT(state.issues, ElementsAre(desktopIssue));
    EXPECT_EQ(state.issues.front().id(), "desktop");
    EXPECT_EQ(state.desktop, ReadinessStatus::warning);
    EXPECT_EQ(state.desktopFileCount, 12);
    EXPECT_EQ(state.score, 15);
}

TEST(ReadinessChecklist, FilesOnAHiddenDesktopDoNotMatter) {
    auto input = allClear();
    input.desktopFileCount = 12;
    input.desktopHidden = true;
    const auto state = build(input);
    EXPECT_EQ(state.desktop, ReadinessStatus::ok);
    EXPECT_THAT(state.issues, IsEmpty());
    EXPECT_EQ(state.score, 0);
    EXPECT_EQ(state.desktopFileCount, 12);
    EXPECT_TRUE(state.desktopHidden);
}

TEST(ReadinessChecklist, NotificationsThatMayAppearAreAWarning) {
    auto input = allClear();
    input.notifications = NotificationStatus::mayAppear;
    const auto state = build(input);
    ASSERT_THAT(state.issues, ElementsAre(notificationsIssue));
    EXPECT_EQ(state.issues.front().id(), "notifications");
    EXPECT_EQ(state.notifications, ReadinessStatus::warning);
    EXPECT_EQ(state.score, 20);
}

TEST(ReadinessChecklist, UncheckedNotificationsCostNothing) {
    auto input = allClear();
    input.notifications = NotificationStatus::unknown;
    const auto state = build(input);
    EXPECT_EQ(state.notifications, ReadinessStatus::unknown);
    EXPECT_THAT(state.issues, IsEmpty());
    EXPECT_EQ(state.score, 0);
}

TEST(ReadinessChecklist, NotificationStatusThatIsNoneOfTheCasesIsUnknown) {
    auto input = allClear();
    input.notifications = static_cast<NotificationStatus>(17);
    EXPECT_EQ(build(input).notifications, ReadinessStatus::unknown);
    EXPECT_THAT(build(input).issues, IsEmpty());
    EXPECT_EQ(build(input).score, 0);
}

TEST(ReadinessChecklist, FailedCameraIsADangerWithoutAnIssue) {
    auto input = allClear();
    input.cameraOK = false;
    const auto state = build(input);
    EXPECT_EQ(state.camera, ReadinessStatus::danger);
    EXPECT_EQ(state.microphone, ReadinessStatus::ok);
    EXPECT_THAT(state.issues, IsEmpty());
    EXPECT_EQ(state.score, 10);
}

TEST(ReadinessChecklist, FailedMicrophoneIsADangerWithoutAnIssue) {
    auto input = allClear();
    input.micOK = false;
    const auto state = build(input);
    EXPECT_EQ(state.microphone, ReadinessStatus::danger);
    EXPECT_EQ(state.camera, ReadinessStatus::ok);
    EXPECT_THAT(state.issues, IsEmpty());
    EXPECT_EQ(state.score, 10);
}

TEST(ReadinessChecklist, ResultsOfChecksThatWereNotMadeAreIgnored) {
    for (const bool passed : {false, true}) {
        auto input = allClear();
        input.cameraEvaluated = input.micEvaluated = false;
        input.cameraOK = input.micOK = passed;
        const auto state = build(input);
        EXPECT_EQ(state.camera, ReadinessStatus::unknown);
        EXPECT_EQ(state.microphone, ReadinessStatus::unknown);
        EXPECT_EQ(state.score, 0);
    }
}

TEST(ReadinessChecklist, NegativeCountsBehaveLikeNone) {
    for (const auto count : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        auto input = allClear();
        input.privateAppsVisible = count;
        input.desktopFileCount = count;
        auto expected = build(allClear());
        expected.desktopFileCount = count;
        EXPECT_EQ(build(input), expected);
    }
}

TEST(ReadinessChecklist, AnyNumberOfDesktopFilesWillDo) {
    auto input = allClear();
    input.desktopFileCount = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(build(input).score, 15);
    EXPECT_EQ(build(input).desktopFileCount, input.desktopFileCount);
}

TEST(ReadinessChecklist, NoInputReachesTheFinderPoints) {
    auto input = allClear();
    input.privateAppsVisible = 5;
    EXPECT_EQ(build(input).score, 65);
}

TEST(ReadinessChecklist, PrivacyModeIsPassedOn) {
    auto input = allClear();
    input.privacyModeActive = false;
    EXPECT_FALSE(build(input).privacyModeActive);
    EXPECT_EQ(build(input).score, 10);
}

TEST(ReadinessChecklistDeathTest, MoreAppsThanCanBeScoredAreFatal) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto input = allClear();
    input.privateAppsVisible = std::numeric_limits<std::int64_t>::max();
    EXPECT_DEATH(build(input), "");
}

TEST(ReadinessState, StartsUnknown) {
    EXPECT_EQ(ReadinessState{}, (ReadinessState{ReadinessStatus::unknown,
                                                ReadinessStatus::unknown,
                                                ReadinessStatus::unknown,
                                                ReadinessStatus::unknown,
                                                ReadinessStatus::unknown,
                                                0,
                                                0,
                                                RiskLevel::low,
                                                {},
                                                false,
                                                false}));
}

TEST(ReadinessState, EqualityComparesEveryField) {
    const auto state = build(allClear());
    const auto differs = [&state](auto change) {
        auto other = state;
        change(other);
        return other != state;
    };
    EXPECT_EQ(state, build(allClear()));
    EXPECT_TRUE(differs([](auto& other) { other.camera = ReadinessStatus::danger; }));
    EXPECT_TRUE(differs([](auto& other) { other.microphone = ReadinessStatus::danger; }));
    EXPECT_TRUE(differs([](auto& other) { other.desktop = ReadinessStatus::warning; }));
    EXPECT_TRUE(differs([](auto& other) { other.notifications = ReadinessStatus::warning; }));
    EXPECT_TRUE(differs([](auto& other) { other.privateApps = ReadinessStatus::danger; }));
    EXPECT_TRUE(differs([](auto& other) { other.desktopFileCount = 1; }));
    EXPECT_TRUE(differs([](auto& other) { other.score = 1; }));
    EXPECT_TRUE(differs([](auto& other) { other.risk = RiskLevel::high; }));
    EXPECT_TRUE(differs([](auto& other) { other.issues.push_back(desktopIssue); }));
    EXPECT_TRUE(differs([](auto& other) { other.privacyModeActive = false; }));
    EXPECT_TRUE(differs([](auto& other) { other.desktopHidden = true; }));
}

TEST(ReadinessIssue, IdIsTheNameOfTheKey) {
    for (const auto key : allCases<LocKey>()) {
        EXPECT_EQ((ReadinessIssue{key, ReadinessStatus::ok}.id()), rawValue(key));
    }
    EXPECT_EQ((ReadinessIssue{static_cast<LocKey>(4000), ReadinessStatus::ok}.id()), "");
}

TEST(ReadinessIssue, EqualityComparesKeyAndSeverity) {
    EXPECT_EQ(desktopIssue, (ReadinessIssue{LocKey::desktop, ReadinessStatus::warning}));
    EXPECT_NE(desktopIssue, (ReadinessIssue{LocKey::desktop, ReadinessStatus::danger}));
    EXPECT_NE(desktopIssue, notificationsIssue);
}

TEST(PermissionKind, CasesComeInTheOrderOfAsking) {
    EXPECT_THAT(allCases<PermissionKind>(),
                ElementsAre(PermissionKind::desktop, PermissionKind::microphone, PermissionKind::camera));
}

TEST(PermissionKind, RawValuesMatchExactly) {
    for (const auto kind : allCases<PermissionKind>()) {
        EXPECT_EQ(fromRawValue<PermissionKind>(rawValue(kind)), kind);
    }
    EXPECT_EQ(rawValue(PermissionKind::desktop), "desktop");
    EXPECT_EQ(rawValue(PermissionKind::microphone), "microphone");
    EXPECT_EQ(rawValue(PermissionKind::camera), "camera");
    for (const auto* const text :
         {"", "Desktop", "CAMERA", " camera", "camera ", "screen", "desktopHidden"}) {
        EXPECT_EQ(fromRawValue<PermissionKind>(text), std::nullopt) << text;
    }
    EXPECT_EQ(rawValue(static_cast<PermissionKind>(3)), "");
}

TEST(PermissionKind, ServesAsAKeyOfAMap) {
    std::unordered_map<PermissionKind, PermissionStatus> statuses{
        {PermissionKind::camera, PermissionStatus::denied}};
    statuses[PermissionKind::camera] = PermissionStatus::granted;
    EXPECT_EQ(statuses.size(), 1U);
    EXPECT_EQ(statuses[PermissionKind::desktop], PermissionStatus::notRequested);
}

TEST(ReadinessStatus, CasesComeInTheirOrder) {
    EXPECT_LT(ReadinessStatus::ok, ReadinessStatus::warning);
    EXPECT_LT(ReadinessStatus::warning, ReadinessStatus::danger);
    EXPECT_LT(ReadinessStatus::danger, ReadinessStatus::unknown);
    EXPECT_LT(NotificationStatus::protected_, NotificationStatus::mayAppear);
    EXPECT_LT(NotificationStatus::mayAppear, NotificationStatus::unknown);
    EXPECT_LT(PermissionStatus::notRequested, PermissionStatus::granted);
    EXPECT_LT(PermissionStatus::granted, PermissionStatus::denied);
}

TEST(ReadinessChecklist, AppsThatNobodyCanSeeAreUnknownAndNoIssue) {
    auto input = allClear();
    input.privateAppsUnknown = 2;
    const auto state = build(input);
    EXPECT_EQ(state.privateApps, ReadinessStatus::unknown);
    EXPECT_EQ(state.privateAppsUnknown, 2);
    EXPECT_THAT(state.issues, IsEmpty());
    EXPECT_EQ(state.score, 0);
}

TEST(ReadinessChecklist, OneVisibleAppIsADangerHoweverManyCannotBeSeen) {
    auto input = allClear();
    input.privateAppsVisible = 1;
    input.privateAppsUnknown = 2;
    const auto state = build(input);
    EXPECT_EQ(state.privateApps, ReadinessStatus::danger);
    EXPECT_EQ(state.privateAppsUnknown, 2);
    EXPECT_EQ(state.score, 25);
}

TEST(ReadinessChecklist, ANegativeNumberOfUnknownAppsIsNone) {
    auto input = allClear();
    input.privateAppsUnknown = -1;
    EXPECT_EQ(build(input).privateApps, ReadinessStatus::ok);
}

} // namespace
