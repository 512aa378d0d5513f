#include "core/Preferences.h"

namespace CurtainCore {

const std::vector<std::string> Preferences::defaultTriggerBundleIDs = {
    "us.zoom.xos",     "com.microsoft.teams", "com.microsoft.teams2",       "com.cisco.webexmeetingsapp",
    "com.hnc.Discord", "com.apple.FaceTime",  "com.apple.QuickTimePlayerX", "com.obsproject.obs-studio",
};

std::vector<std::string> Preferences::targetBundleIDs() const {
    std::vector<std::string> identifiers;
    identifiers.reserve(targetApps.size());
    for (const auto& target : targetApps) {
        identifiers.push_back(target.bundleID);
    }
    return identifiers;
}

} // namespace CurtainCore
