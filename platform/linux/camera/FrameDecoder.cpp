#include "platform/linux/camera/FrameDecoder.h"

#include "platform/linux/camera/RawVideo.h"

namespace LinuxPlatform {
namespace {

/// Nobody sees a picture made larger by so little, and the next size up costs four times as much.
bool isEnough(int size, int needed) {
    return size * 16 >= needed * 15;
}

int reductionFor(int width, int height, int neededWidth, int neededHeight) {
    int reduction = 8;
    while (reduction > 1 &&
           !(isEnough(width / reduction, neededWidth) && isEnough(height / reduction, neededHeight))) {
        reduction /= 2;
    }
    return reduction;
}

} // namespace

std::shared_ptr<const Platform::Picture> FrameDecoder::picture(const VideoFrame& frame, int width,
                                                               int height) {
    JpegCodec::Size size{frame.format.width, frame.format.height};
    if (frame.format.layout == PixelLayout::jpeg) {
        const auto own = codec_.size(frame.planes[0].data);
        if (!own) {
            return nullptr;
        }
        size = *own;
    }
    return decode(frame, reductionFor(size.width, size.height, width, height));
}

std::optional<std::vector<std::byte>> FrameDecoder::photo(const VideoFrame& frame) {
    if (frame.format.layout != PixelLayout::jpeg) {
        const auto whole = decode(frame, 1);
        return whole ? codec_.encode(*whole) : std::nullopt;
    }
    // Decoding at an eighth reads every byte all the same.
    const auto data = frame.planes[0].data;
    return decode(frame, 8) ? std::optional(std::vector<std::byte>(data.begin(), data.end())) : std::nullopt;
}

std::shared_ptr<const Platform::Picture> FrameDecoder::decode(const VideoFrame& frame, int reduction) {
    if (frame.format.layout != PixelLayout::jpeg) {
        return pictureOfRawFrame(frame, reduction);
    }
    // Some cameras never deliver a JPEG that is right to the last byte; those are taken as they are.
    auto decoded = codec_.decode(frame.planes[0].data, reduction);
    if (decoded.isDamaged && hasSeenSoundJpeg_) {
        return nullptr;
    }
    hasSeenSoundJpeg_ = hasSeenSoundJpeg_ || (decoded.picture && !decoded.isDamaged);
    return decoded.picture;
}

} // namespace LinuxPlatform
