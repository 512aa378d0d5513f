#pragma once

#include "platform/linux/session/SessionEnvironment.h"

#include <string>

namespace LinuxPlatform {

/// Differs from one login to the next, also after the machine has been started again. The same for all
/// programs of a session, however they were started. One line.
std::string sessionMark(const SessionEnvironment& environment);

} // namespace LinuxPlatform
