#include "core/ReadinessChecklist.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace CurtainCore {
namespace {

ReadinessStatus status(std::optional<bool> passed) {
    if (!passed) {
        return ReadinessStatus::unknown;
    }
    return *passed ? ReadinessStatus::ok : ReadinessStatus::danger;
}

ReadinessStatus status(NotificationStatus notifications) {
    switch (notifications) {
    case NotificationStatus::protected_:
        return ReadinessStatus::ok;
    case NotificationStatus::mayAppear:
        return ReadinessStatus::warning;
    case NotificationStatus::unknown:
        break;
    }
    return ReadinessStatus::unknown;
}

std::optional<bool> result(bool evaluated, bool passed) {
    return evaluated ? std::optional(passed) : std::nullopt;
}

ReadinessStatus privateAppsStatus(const ReadinessInput& input) {
    if (input.privateAppsVisible >= 1) {
        return ReadinessStatus::danger;
    }
    return input.privateAppsUnknown >= 1 ? ReadinessStatus::unknown : ReadinessStatus::ok;
}

} // namespace

ReadinessState ReadinessChecklistEngine::build(const ReadinessInput& input) const {
    const bool appsExposed = input.privateAppsVisible >= 1;
    const bool desktopExposed = !input.desktopHidden && input.desktopFileCount >= 1;
    const bool notificationsMayAppear = input.notifications == NotificationStatus::mayAppear;
    const auto camera = result(input.cameraEvaluated, input.cameraOK);
    const auto microphone = result(input.micEvaluated, input.micOK);

    std::vector<ReadinessIssue> issues;
    issues.reserve(std::size_t{appsExposed} + std::size_t{desktopExposed} +
                   std::size_t{notificationsMayAppear});
    if (appsExposed) {
        issues.emplace_back(LocKey::privateApps, ReadinessStatus::danger);
    }
    if (desktopExposed) {
        issues.emplace_back(LocKey::desktop, ReadinessStatus::warning);
    }
    if (notificationsMayAppear) {
        issues.emplace_back(LocKey::notifications, ReadinessStatus::warning);
    }

    const auto [score, risk] = EmbarrassmentScoreEngine().evaluate({
        .visiblePrivateApps = input.privateAppsVisible,
        // A visible Finder window is none of the checklist's facts, on purpose.
        .finderVisible = false,
        .desktopFiles = desktopExposed,
        .notificationsMayAppear = notificationsMayAppear,
        .micWorking = microphone,
        .cameraAvailable = camera,
        .privacyModeActive = input.privacyModeActive,
    });

    return {
        .camera = status(camera),
        .microphone = status(microphone),
        .desktop = desktopExposed ? ReadinessStatus::warning : ReadinessStatus::ok,
        .notifications = status(input.notifications),
        .privateApps = privateAppsStatus(input),
        .desktopFileCount = input.desktopFileCount,
        .score = score,
        .risk = risk,
        .issues = std::move(issues),
        .privacyModeActive = input.privacyModeActive,
        .desktopHidden = input.desktopHidden,
        .privateAppsUnknown = input.privateAppsUnknown,
    };
}

} // namespace CurtainCore
