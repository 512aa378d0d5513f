#include "platform/linux/camera/FrameDecoder.h"

#include "platform/linux/camera/JpegTables.h"
#include "platform/linux/camera/RawVideo.h"
#include "platform/linux/camera/Upright.h"

#include <utility>

namespace LinuxPlatform {
namespace {

/// For so long, a sound picture is better than a newer one that is damaged. After that the preview would
/// stand still, and with some cameras most frames bring a warning that nothing can be seen of.
constexpr std::chrono::milliseconds longestHold{100};

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

FrameDecoder::FrameDecoder(std::function<Clock::time_point()> now) : now_(std::move(now)) {}

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
    const bool isOnItsSide = frame.orientation.quarterTurns % 2 != 0;
    const int reduction =
        reductionFor(size.width, size.height, isOnItsSide ? height : width, isOnItsSide ? width : height);
    return upright(decode(frame, reduction), frame.orientation);
}

std::optional<std::vector<std::byte>> FrameDecoder::photo(const VideoFrame& frame) {
    if (frame.format.layout != PixelLayout::jpeg || !frame.orientation.isUpright()) {
        const auto whole = upright(decode(frame, 1), frame.orientation);
        return whole ? codec_.encode(*whole) : std::nullopt;
    }
    // Decoding at an eighth reads every byte all the same.
    const auto data = frame.planes[0].data;
    return decode(frame, 8) ? std::optional(withHuffmanTables(data)) : std::nullopt;
}

std::shared_ptr<const Platform::Picture> FrameDecoder::decode(const VideoFrame& frame, int reduction) {
    if (frame.format.layout != PixelLayout::jpeg) {
        return pictureOfRawFrame(frame, reduction);
    }
    auto decoded = codec_.decode(frame.planes[0].data, reduction);
    const auto time = now_();
    if (decoded.isDamaged) {
        const bool canWait = lastSoundJpeg_ && time - *lastSoundJpeg_ < longestHold;
        return canWait ? nullptr : decoded.picture;
    }
    if (decoded.picture) {
        lastSoundJpeg_ = time;
    }
    return decoded.picture;
}

} // namespace LinuxPlatform
