#include "tests/fuzz/FuzzCheck.h"

#include "platform/linux/camera/FrameDecoder.h"

#include <cstdint>
#include <span>

namespace {

using LinuxPlatform::largestFrameSide;

void checkPicture(const Platform::Picture& picture) {
    Fuzz::check(picture.width > 0 && picture.width <= largestFrameSide, "a picture has a width");
    Fuzz::check(picture.height > 0 && picture.height <= largestFrameSide, "a picture has a height");
    const auto pixels = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    Fuzz::check(picture.pixels.size() == pixels * 4, "a picture has as many pixels as it says");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::span<const std::byte> jpeg(reinterpret_cast<const std::byte*>(bytes), size);
    LinuxPlatform::VideoFrame frame;
    frame.planes[0] = {jpeg, 0};
    frame.orientation = {(bytes[size - 1] & 4U) != 0, bytes[size - 1] & 3};
    LinuxPlatform::FrameDecoder decoder([] { return LinuxPlatform::FrameDecoder::Clock::time_point(); });
    if (const auto picture = decoder.picture(frame, 16, 16)) {
        checkPicture(*picture);
    }
    if (const auto photo = decoder.photo(frame)) {
        Fuzz::check(LinuxPlatform::JpegCodec().size(*photo).has_value(), "a photo is a JPEG");
    }
    return 0;
}
