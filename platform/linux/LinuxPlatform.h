#pragma once

#include "platform/Platform.h"
#include "platform/linux/session/SessionEnvironment.h"

namespace LinuxPlatform {

/// The ports of this Linux session. Needs a running QApplication on this thread. What the session lacks is
/// said once in the log and answered by a port that does nothing.
Platform::Platform makeLinuxPlatform(const SessionEnvironment& environment);

} // namespace LinuxPlatform
