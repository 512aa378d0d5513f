#include "core/Preferences.h"

namespace CurtainCore {

const std::vector<std::string> Preferences::defaultTriggerBundleIDs = {
    "us.zoom.xos",     "com.microsoft.teams", "com.microsoft.teams2",       "com.cisco.webexmeetingsapp",
    "com.hnc.Discord", "com.apple.FaceTime",  "com.apple.QuickTimePlayerX", "com.obsproject.obs-studio",
};

} // namespace CurtainCore
