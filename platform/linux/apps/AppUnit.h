#pragma once

#include "platform/linux/apps/SnapApp.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// What the name of a systemd unit says about the app that a desktop started in it
/// (https://systemd.io/DESKTOP_ENVIRONMENTS): "app-gnome-org.gnome.Maps-4711.scope",
/// "app-org.kde.okular@0815.service", and snapd's "snap.firefox.firefox-UUID.scope".
struct AppUnit {
    /// The ids, without suffix, that its desktop entry may have, the likeliest first.
    std::vector<std::string> desktopEntryIds;
    std::optional<SnapApp> snap;
    /// The process for which the unit was made, where its name says so.
    std::optional<std::uint32_t> process;

    /// Absent where the control group is none of an app's.
    static std::optional<AppUnit> ofControlGroup(std::string_view path);
};

} // namespace LinuxPlatform
