#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/JpegCodec.h"
#include "platform/linux/camera/VideoFrame.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Makes pictures and photos of the frames of one camera. One thread at a time.
class FrameDecoder {
public:
    using Clock = std::chrono::steady_clock;

    /// `now` is called on the frames' thread.
    explicit FrameDecoder(std::function<Clock::time_point()> now = Clock::now);

    /// Upright, as small as it may be and still fill that many pixels, or all but a sixteenth of them. Null
    /// for a frame that is not worth showing: one that does not decode, and a damaged one right after a sound
    /// one.
    std::shared_ptr<const Platform::Picture> picture(const VideoFrame& frame, int width, int height);
    /// An image file: the camera's own JPEG, if it is upright, unchanged but for standard tables that it
    /// leaves out, any other frame encoded. Absent for a frame that is not worth showing.
    std::optional<std::vector<std::byte>> photo(const VideoFrame& frame);

private:
    std::shared_ptr<const Platform::Picture> decode(const VideoFrame& frame, int reduction);

    std::function<Clock::time_point()> now_;
    JpegCodec codec_;
    std::optional<Clock::time_point> lastSoundJpeg_;
};

} // namespace LinuxPlatform
