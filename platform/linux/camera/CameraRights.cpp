#include "platform/linux/camera/CameraRights.h"

#include <algorithm>

namespace LinuxPlatform {

bool mayUseCameras(VideoDeviceCalls& calls) {
    const auto devices = calls.devices();
    return devices.empty() ||
           std::ranges::any_of(devices, [&](const auto& path) { return calls.isAllowed(path); });
}

} // namespace LinuxPlatform
