#include "core/ShareDetector.h"

namespace CurtainCore {

DetectionConfidence ShareDetector::evaluate(bool watcherActive,
                                            const std::set<std::string>& runningTriggers) const {
    if (watcherActive) {
        return DetectionConfidence::high;
    }
    return runningTriggers.empty() ? DetectionConfidence::none : DetectionConfidence::low;
}

} // namespace CurtainCore
