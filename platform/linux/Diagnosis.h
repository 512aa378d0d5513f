#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/session/SessionEnvironment.h"

#include <functional>
#include <string>

namespace LinuxPlatform {

/// What a report about a fault needs to say of the session and of what Curtain finds in it, a line at a time.
/// In English; names no app, no window and no folder. Needs a QCoreApplication; changes nothing and starts
/// nothing. If somebody does not answer for ten seconds, says so and ends the process, which then has failed.
void diagnose(const SessionEnvironment& environment, Platform::MainQueue& mainQueue,
              const std::function<void(const std::string& line)>& print);

} // namespace LinuxPlatform
