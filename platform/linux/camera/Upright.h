#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/VideoFrame.h"

#include <memory>

namespace LinuxPlatform {

/// The picture that `orientation` has made of an upright one, upright again. Null for null.
std::shared_ptr<const Platform::Picture> upright(std::shared_ptr<const Platform::Picture> picture,
                                                 const Orientation& orientation);

} // namespace LinuxPlatform
