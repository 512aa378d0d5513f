#pragma once

#include <set>
#include <string>

namespace CurtainCore {

/// How likely the screen is being shared or recorded right now.
enum class DetectionConfidence {
    none,
    low,  ///< a call, meeting or recording app runs, but nothing captures the screen
    high, ///< something captures the screen
};

/// Judges two observations. Pure.
class ShareDetector {
public:
    /// `runningTriggers`: the bundle identifiers that run and are in the user's trigger list.
    DetectionConfidence evaluate(bool watcherActive, const std::set<std::string>& runningTriggers) const;
};

} // namespace CurtainCore
