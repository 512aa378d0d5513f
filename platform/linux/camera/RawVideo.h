#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/VideoFrame.h"

#include <memory>

namespace LinuxPlatform {

/// The picture of a frame that is not JPEG, made smaller by `reduction`: 1, 2, 4 or 8. Colours are those of
/// ITU-R BT.601 with 16 to 235 for black to white, as cameras deliver them. Null for a frame that is smaller
/// than its format promises.
std::shared_ptr<const Platform::Picture> pictureOfRawFrame(const VideoFrame& frame, int reduction);

} // namespace LinuxPlatform
