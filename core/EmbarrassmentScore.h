#pragma once

#include <cstdint>
#include <optional>

namespace CurtainCore {

enum class RiskLevel { low, medium, high, veryHigh };

/// What the other side of a call would see if the screen were shared now.
struct ScoreInput {
    std::int64_t visiblePrivateApps = 0;
    bool finderVisible = false;
    bool desktopFiles = false;
    bool notificationsMayAppear = false;
    /// Absent means not tested.
    std::optional<bool> micWorking;
    /// Absent means not tested.
    std::optional<bool> cameraAvailable;
    bool privacyModeActive = false;

    bool operator==(const ScoreInput&) const = default;
};

struct ScoreResult {
    /// 0 to 100.
    int score = 0;
    RiskLevel risk = RiskLevel::low;

    bool operator==(const ScoreResult&) const = default;
};

/// Condenses the exposure into one number and a level. Pure.
class EmbarrassmentScoreEngine {
public:
    /// A check that was not made costs nothing, a failed one does; privacy mode off always costs. Aborts when
    /// the number of apps is beyond a tenth of its type's range.
    ScoreResult evaluate(const ScoreInput& input) const;

    static RiskLevel risk(int score);
};

} // namespace CurtainCore
