#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace LinuxPlatform {

/// How a camera lays out its pixels. The names are those of the kernel's video formats; of four bytes a
/// pixel, the last is unused.
enum class PixelLayout : std::uint8_t { jpeg, yuyv, uyvy, nv12, yuv420, gray, bgrx, rgbx, bgr, rgb };

/// How the values of luma and chroma stand for colours: 16 to 235 or 0 to 255 for black to white, and by
/// which of the two recommendations of the ITU.
enum class ColorRange : std::uint8_t { limited, full };
enum class ColorMatrix : std::uint8_t { bt601, bt709 };

struct VideoFormat {
    PixelLayout layout = PixelLayout::jpeg;
    /// In pixels. A JPEG frame says its own.
    int width = 0;
    int height = 0;
    /// Of layouts with luma.
    ColorRange range = ColorRange::limited;
    ColorMatrix matrix = ColorMatrix::bt601;

    bool operator==(const VideoFormat&) const = default;
};

/// The memory of a plane of pixels, which may be smaller than its format promises.
struct VideoPlane {
    std::span<const std::byte> data;
    /// Bytes from one row to the next; 0 for rows without gaps.
    int stride = 0;
};

/// What has been done to an upright picture: mirrored or not, left for right, then turned counter-clockwise.
struct Orientation {
    bool isMirrored = false;
    int quarterTurns = 0;

    bool isUpright() const { return !isMirrored && quarterTurns == 0; }
    bool operator==(const Orientation&) const = default;
};

/// A frame as the camera delivers it, good only during the call that hands it over. A layout of several
/// planes may also have them one after another in the first.
struct VideoFrame {
    VideoFormat format;
    std::array<VideoPlane, 3> planes;
    Orientation orientation = {};
};

/// No camera that Curtain takes announces or delivers more in either direction.
inline constexpr int largestFrameSide = 8192;

} // namespace LinuxPlatform
