#pragma once

#include "platform/linux/camera/VideoDeviceCalls.h"

namespace LinuxPlatform {

/// Whether this user may open at least one of the computer's cameras, as far as the files of the devices
/// tell; true where there are none.
bool mayUseCameras(VideoDeviceCalls& calls);

} // namespace LinuxPlatform
