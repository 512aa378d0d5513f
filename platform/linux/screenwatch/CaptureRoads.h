#pragma once

#include "platform/Log.h"
#include "platform/linux/screenwatch/CaptureWatch.h"
#include "platform/linux/session/SessionEnvironment.h"

#include <memory>
#include <vector>

namespace LinuxPlatform {

/// Whether programs get at the screen by reading it from the X server. That of a Wayland session shows its
/// clients nothing but black.
bool isScreenReadFromXServer(const SessionEnvironment& environment);

/// All roads to the picture of this session's screen that can be watched. `log` outlives them.
std::vector<std::unique_ptr<CaptureWatch>> captureRoads(const SessionEnvironment& environment,
                                                        Platform::Log& log);

} // namespace LinuxPlatform
