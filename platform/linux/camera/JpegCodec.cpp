#include "platform/linux/camera/JpegCodec.h"

#include "platform/linux/camera/VideoFrame.h"

#include <turbojpeg.h>

#include <cstdint>
#include <cstring>

namespace LinuxPlatform {
namespace {

constexpr int photoQuality = 92;
/// A frame of 8K television and a little more.
constexpr std::int64_t mostPixels = std::int64_t{34} * 1000 * 1000;
/// A file of a few kilobytes can have thousands of scans, each of which costs as much as a picture.
constexpr int flags = TJFLAG_FASTDCT | TJFLAG_FASTUPSAMPLE | TJFLAG_LIMITSCANS;

const unsigned char* bytes(std::span<const std::byte> data) {
    return reinterpret_cast<const unsigned char*>(data.data());
}

} // namespace

JpegCodec::JpegCodec() : decompressor_(tjInitDecompress()) {}

JpegCodec::~JpegCodec() {
    for (auto* handle : {decompressor_, compressor_}) {
        if (handle) {
            tjDestroy(handle);
        }
    }
}

std::optional<JpegCodec::Size> JpegCodec::size(std::span<const std::byte> jpeg) {
    Size size;
    int subsampling = 0;
    int colorspace = 0;
    if (!decompressor_ || jpeg.empty() ||
        tjDecompressHeader3(decompressor_, bytes(jpeg), jpeg.size(), &size.width, &size.height, &subsampling,
                            &colorspace) != 0 ||
        size.width <= 0 || size.height <= 0 || size.width > largestFrameSide ||
        size.height > largestFrameSide || std::int64_t{size.width} * size.height > mostPixels) {
        return std::nullopt;
    }
    return size;
}

JpegCodec::Decoded JpegCodec::decode(std::span<const std::byte> jpeg, int reduction) {
    const auto full = size(jpeg);
    if (!full) {
        return {};
    }
    const tjscalingfactor scale{1, reduction};
    auto picture = std::make_shared<Platform::Picture>();
    picture->width = TJSCALED(full->width, scale);
    picture->height = TJSCALED(full->height, scale);
    picture->pixels.resize(static_cast<std::size_t>(picture->width) * 4 *
                           static_cast<std::size_t>(picture->height));
    const int failed = tjDecompress2(decompressor_, bytes(jpeg), jpeg.size(),
                                     reinterpret_cast<unsigned char*>(picture->pixels.data()), picture->width,
                                     picture->width * 4, picture->height, TJPF_BGRX, flags);
    if (failed != 0 && tjGetErrorCode(decompressor_) != TJERR_WARNING) {
        return {};
    }
    return {std::move(picture), failed != 0};
}

std::optional<std::vector<std::byte>> JpegCodec::encode(const Platform::Picture& picture) {
    if (!compressor_) {
        compressor_ = tjInitCompress();
    }
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    std::optional<std::vector<std::byte>> encoded;
    if (compressor_ && tjCompress2(compressor_, reinterpret_cast<const unsigned char*>(picture.pixels.data()),
                                   picture.width, picture.width * 4, picture.height, TJPF_BGRX, &buffer,
                                   &size, TJSAMP_422, photoQuality, 0) == 0) {
        encoded.emplace(size);
        std::memcpy(encoded->data(), buffer, size);
    }
    tjFree(buffer);
    return encoded;
}

} // namespace LinuxPlatform
