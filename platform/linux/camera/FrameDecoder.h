#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/JpegCodec.h"
#include "platform/linux/camera/VideoFrame.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Makes pictures and photos of the frames of one camera. One thread at a time.
class FrameDecoder {
public:
    /// As small as it may be and still fill that many pixels, or all but a sixteenth of them. Null for a
    /// frame that is not worth showing: one that does not decode, and a damaged one of a camera that can do
    /// better.
    std::shared_ptr<const Platform::Picture> picture(const VideoFrame& frame, int width, int height);
    /// An image file: the camera's own JPEG unchanged, any other frame encoded. Absent for a frame that is
    /// not worth showing.
    std::optional<std::vector<std::byte>> photo(const VideoFrame& frame);

private:
    std::shared_ptr<const Platform::Picture> decode(const VideoFrame& frame, int reduction);

    JpegCodec codec_;
    bool hasSeenSoundJpeg_ = false;
};

} // namespace LinuxPlatform
