#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/VideoFrame.h"

#include <memory>

namespace LinuxPlatform {

/// The picture of a frame that is not JPEG, as it lies in memory, made smaller by `reduction`: 1, 2, 4 or 8.
/// Null for a frame that is smaller than its format promises.
std::shared_ptr<const Platform::Picture> pictureOfRawFrame(const VideoFrame& frame, int reduction);

} // namespace LinuxPlatform
