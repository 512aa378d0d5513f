#include "core/EmbarrassmentScore.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace CurtainCore {
namespace {

constexpr int firstAppPoints = 25;
constexpr std::int64_t furtherAppPoints = 10;
constexpr std::int64_t furtherAppsLimit = 40;
constexpr int finderPoints = 20;
constexpr int desktopPoints = 15;
constexpr int notificationPoints = 20;
constexpr int failedCheckPoints = 10;
constexpr int privacyOffPoints = 10;
constexpr int highestScore = 100;

int privateAppPoints(std::int64_t visibleApps) {
    if (visibleApps < 1) {
        return 0;
    }
    const auto furtherApps = visibleApps - 1;
    if (furtherApps > std::numeric_limits<std::int64_t>::max() / furtherAppPoints) {
        std::abort();
    }
    return firstAppPoints + static_cast<int>(std::min(furtherApps * furtherAppPoints, furtherAppsLimit));
}

} // namespace

ScoreResult EmbarrassmentScoreEngine::evaluate(const ScoreInput& input) const {
    int total = privateAppPoints(input.visiblePrivateApps);
    total += input.finderVisible ? finderPoints : 0;
    total += input.desktopFiles ? desktopPoints : 0;
    total += input.notificationsMayAppear ? notificationPoints : 0;
    total += input.micWorking.value_or(true) ? 0 : failedCheckPoints;
    total += input.cameraAvailable.value_or(true) ? 0 : failedCheckPoints;
    total += input.privacyModeActive ? 0 : privacyOffPoints;
    return {std::min(total, highestScore), risk(total)};
}

RiskLevel EmbarrassmentScoreEngine::risk(int score) {
    if (score < 21) {
        return RiskLevel::low;
    }
    if (score <= 50) {
        return RiskLevel::medium;
    }
    return score <= 80 ? RiskLevel::high : RiskLevel::veryHigh;
}

} // namespace CurtainCore
