#pragma once

#include "platform/linux/session/SessionEnvironment.h"

#include <string>

namespace LinuxPlatform {

/// The desktop's names as the variable that they come from has them.
inline std::string desktopNames(const SessionEnvironment& environment) {
    std::string names;
    for (const auto& name : environment.desktops) {
        names += (names.empty() ? "" : ":") + name;
    }
    return names;
}

} // namespace LinuxPlatform
