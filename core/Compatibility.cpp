#include "core/Compatibility.h"

#include <algorithm>

namespace CurtainCore {

CompatibilityResult CompatibilityChecker::evaluate(const CompatibilitySignals& found) {
    return {
        .osSupported = found.osMajorVersion >= minimumMajorVersion,
        .hasCamera = found.hasCamera,
        .hasMicrophone = found.hasMicrophone,
        .videoAppNames = found.videoAppNames,
    };
}

std::vector<std::string>
installedVideoAppNames(const std::function<bool(std::string_view bundleID)>& isInstalled) {
    std::vector<std::string> names;
    for (const auto& app : videoApps) {
        if (isInstalled(app.bundleID) && std::ranges::find(names, app.displayName) == names.end()) {
            names.emplace_back(app.displayName);
        }
    }
    return names;
}

} // namespace CurtainCore
