#pragma once

#include "platform/Platform.h"
#include "platform/linux/session/SessionEnvironment.h"

#include <optional>
#include <string>

namespace LinuxPlatform {

/// One sentence for the user where there is no X server to show windows on; absent where there is one.
std::optional<std::string> missingXServer(const SessionEnvironment& environment);

/// The ports of this Linux session. Needs a running QGuiApplication on this thread. What the session lacks is
/// said once in the log and answered by a port that does nothing.
Platform::Platform makeLinuxPlatform(const SessionEnvironment& environment);

} // namespace LinuxPlatform
