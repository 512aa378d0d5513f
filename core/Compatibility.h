#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace CurtainCore {

/// What the running system offers.
struct CompatibilitySignals {
    int osMajorVersion = 0;
    bool hasCamera = false;
    bool hasMicrophone = false;
    /// Display names of the installed video-call apps.
    std::vector<std::string> videoAppNames;

    bool operator==(const CompatibilitySignals&) const = default;
};

struct CompatibilityResult {
    bool osSupported = false;
    bool hasCamera = false;
    bool hasMicrophone = false;
    std::vector<std::string> videoAppNames;

    /// Missing devices and apps are shown, but do not count.
    bool isCompatible() const { return osSupported; }
    bool operator==(const CompatibilityResult&) const = default;
};

namespace CompatibilityChecker {

inline constexpr int minimumMajorVersion = 14;

CompatibilityResult evaluate(const CompatibilitySignals& found);

} // namespace CompatibilityChecker

struct VideoApp {
    std::string_view bundleID;
    std::string_view displayName;
};

/// The video-call apps to look for. A browser stands for the meeting service on the web.
inline constexpr std::array<VideoApp, 7> videoApps{{
    {"us.zoom.xos", "Zoom"},
    {"com.microsoft.teams", "Teams"},
    {"com.microsoft.teams2", "Teams"},
    {"com.cisco.webexmeetingsapp", "Webex"},
    {"com.hnc.Discord", "Discord"},
    {"com.apple.FaceTime", "FaceTime"},
    {"com.google.Chrome", "Meet"},
}};

/// The display names of the video-call apps that are installed, each once.
std::vector<std::string>
installedVideoAppNames(const std::function<bool(std::string_view bundleID)>& isInstalled);

} // namespace CurtainCore
