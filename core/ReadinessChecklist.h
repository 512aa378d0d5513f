#pragma once

#include "core/EmbarrassmentScore.h"
#include "core/LocKey.h"
#include "core/RawValue.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace CurtainCore {

/// How one check stands. A warning may leak, but exposes nothing right now.
enum class ReadinessStatus { ok, warning, danger, unknown };

enum class NotificationStatus {
    protected_, ///< the user has dealt with notifications
    mayAppear,
    unknown,
};

/// What the user is asked to permit, in the order of asking.
enum class PermissionKind { desktop, microphone, camera };

template <>
struct RawValues<PermissionKind> {
    static constexpr std::array<std::pair<PermissionKind, std::string_view>, 3> cases{{
        {PermissionKind::desktop, "desktop"},
        {PermissionKind::microphone, "microphone"},
        {PermissionKind::camera, "camera"},
    }};
};

enum class PermissionStatus { notRequested, granted, denied };

struct ReadinessIssue {
    LocKey key;
    ReadinessStatus severity;

    constexpr ReadinessIssue(LocKey issueKey, ReadinessStatus issueSeverity)
        : key(issueKey),
          severity(issueSeverity) {}

    std::string_view id() const { return rawValue(key); }
    bool operator==(const ReadinessIssue&) const = default;
};

/// The facts about the machine. Without `…Evaluated` the matching `…OK` says nothing.
struct ReadinessInput {
    std::int64_t privateAppsVisible = 0;
    std::int64_t desktopFileCount = 0;
    NotificationStatus notifications = NotificationStatus::unknown;
    bool cameraEvaluated = false;
    bool cameraOK = false;
    bool micEvaluated = false;
    bool micOK = false;
    bool privacyModeActive = false;
    bool desktopHidden = false;
    /// Private apps that may be on the screen or not; none of them is among the visible ones.
    std::int64_t privateAppsUnknown = 0;

    bool operator==(const ReadinessInput&) const = default;
};

struct ReadinessState {
    ReadinessStatus camera = ReadinessStatus::unknown;
    ReadinessStatus microphone = ReadinessStatus::unknown;
    ReadinessStatus desktop = ReadinessStatus::unknown;
    ReadinessStatus notifications = ReadinessStatus::unknown;
    ReadinessStatus privateApps = ReadinessStatus::unknown;
    std::int64_t desktopFileCount = 0;
    int score = 0;
    RiskLevel risk = RiskLevel::low;
    /// At most three: private apps, desktop, notifications, in this order.
    std::vector<ReadinessIssue> issues;
    bool privacyModeActive = false;
    bool desktopHidden = false;
    /// As told; the score counts none of them.
    std::int64_t privateAppsUnknown = 0;

    bool operator==(const ReadinessState&) const = default;
};

/// Turns the facts into rows, issues and score. Pure; callable from any thread.
class ReadinessChecklistEngine {
public:
    ReadinessState build(const ReadinessInput& input) const;
};

} // namespace CurtainCore
