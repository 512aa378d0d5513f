#pragma once

#include "platform/linux/camera/VideoFrame.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Fuzz {

/// Blue, green, red and 255 for each pixel of a frame that is not JPEG, made smaller by `reduction`, pixel by
/// pixel and by the equations of ITU-R BT.601 and BT.709 as they stand there. Absent for a frame that is
/// smaller than its format promises.
std::optional<std::vector<std::uint8_t>> slowPicture(const LinuxPlatform::VideoFrame& frame, int reduction);

} // namespace Fuzz
