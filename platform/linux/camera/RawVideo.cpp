#include "platform/linux/camera/RawVideo.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace LinuxPlatform {
namespace {

struct Plane {
    const std::uint8_t* first = nullptr;
    std::size_t stride = 0;

    const std::uint8_t* row(std::size_t y) const { return first + y * stride; }
};

struct PlaneShape {
    std::size_t bytesInRow = 0;
    std::size_t rows = 0;
};

/// The planes of a frame, all of them large enough for what will be read.
using Planes = std::array<Plane, 3>;

std::array<PlaneShape, 3> shapes(const VideoFormat& format) {
    const auto width = static_cast<std::size_t>(format.width);
    const auto height = static_cast<std::size_t>(format.height);
    const auto halfWidth = (width + 1) / 2;
    const auto halfHeight = (height + 1) / 2;
    switch (format.layout) {
    case PixelLayout::yuyv:
    case PixelLayout::uyvy:
        return {{{halfWidth * 4, height}}};
    case PixelLayout::nv12:
        return {{{width, height}, {halfWidth * 2, halfHeight}}};
    case PixelLayout::yuv420:
        return {{{width, height}, {halfWidth, halfHeight}, {halfWidth, halfHeight}}};
    case PixelLayout::gray:
        return {{{width, height}}};
    case PixelLayout::bgrx:
    case PixelLayout::rgbx:
        return {{{width * 4, height}}};
    case PixelLayout::bgr:
    case PixelLayout::rgb:
        return {{{width * 3, height}}};
    case PixelLayout::jpeg:
        break;
    }
    return {};
}

std::optional<Planes> planesOf(const VideoFrame& frame) {
    Planes planes;
    // Where a plane that has no memory of its own begins: behind the one before it.
    std::span<const std::byte> rest;
    std::size_t strideOfFirst = 0;
    const auto allShapes = shapes(frame.format);
    for (std::size_t index = 0; index < planes.size(); ++index) {
        const auto& shape = allShapes[index];
        if (shape.rows == 0) {
            break;
        }
        const auto& given = frame.planes[index];
        auto data = given.data;
        auto stride = static_cast<std::size_t>(std::max(given.stride, 0));
        if (index > 0 && data.empty()) {
            data = rest;
            stride = strideOfFirst * shape.bytesInRow / allShapes[0].bytesInRow;
        }
        if (stride == 0) {
            stride = shape.bytesInRow;
        }
        if (stride < shape.bytesInRow || data.size() < stride * (shape.rows - 1) + shape.bytesInRow) {
            return std::nullopt;
        }
        if (index == 0) {
            strideOfFirst = stride;
        }
        rest = data.subspan(std::min(data.size(), stride * shape.rows));
        planes[index] = {reinterpret_cast<const std::uint8_t*>(data.data()), stride};
    }
    return planes;
}

/// The samples of one row of the picture, one of each kind a pixel, for loops that the compiler can
/// vectorise.
struct Samples {
    explicit Samples(std::size_t width) : luma(width), blue(width), red(width) {}

    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> blue;
    std::vector<std::uint8_t> red;
};

std::uint8_t mean(int a, int b) {
    return static_cast<std::uint8_t>((a + b + 1) >> 1);
}

std::uint8_t mean(int a, int b, int c, int d) {
    return static_cast<std::uint8_t>((a + b + c + d + 2) >> 2);
}

/// Two pixels in four bytes; `lumaAt` is 0 or 1, the place of the first luma sample.
void gatherPacked(const std::uint8_t* row, const std::uint8_t* next, std::size_t lumaAt, std::size_t step,
                  Samples& out) {
    const auto chromaAt = 1 - lumaAt;
    const auto count = out.luma.size();
    if (step == 1) {
        for (std::size_t x = 0; x < count; ++x) {
            const auto pair = x / 2 * 4;
            out.luma[x] = row[2 * x + lumaAt];
            out.blue[x] = row[pair + chromaAt];
            out.red[x] = row[pair + chromaAt + 2];
        }
        return;
    }
    for (std::size_t x = 0; x < count; ++x) {
        const auto at = 2 * step * x;
        out.luma[x] = mean(row[at + lumaAt], row[at + lumaAt + 2], next[at + lumaAt], next[at + lumaAt + 2]);
        out.blue[x] = mean(row[at + chromaAt], next[at + chromaAt]);
        out.red[x] = mean(row[at + chromaAt + 2], next[at + chromaAt + 2]);
    }
}

void gatherLuma(const std::uint8_t* row, const std::uint8_t* next, std::size_t step, Samples& out) {
    const auto count = out.luma.size();
    if (step == 1) {
        std::copy_n(row, count, out.luma.begin());
        return;
    }
    for (std::size_t x = 0; x < count; ++x) {
        const auto at = x * step;
        out.luma[x] = mean(row[at], row[at + 1], next[at], next[at + 1]);
    }
}

/// A chroma sample stands for two pixels; the samples of the two kinds are `apart` bytes from the next of
/// their kind.
void gatherChroma(const std::uint8_t* blue, const std::uint8_t* red, std::size_t apart, std::size_t step,
                  Samples& out) {
    const auto count = out.luma.size();
    for (std::size_t x = 0; x < count; ++x) {
        const auto at = x * step / 2 * apart;
        out.blue[x] = blue[at];
        out.red[x] = red[at];
    }
}

std::uint8_t clamped(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

void convert(const Samples& samples, std::uint8_t* out) {
    const auto count = samples.luma.size();
    const auto* luma = samples.luma.data();
    const auto* blue = samples.blue.data();
    const auto* red = samples.red.data();
    for (std::size_t x = 0; x < count; ++x) {
        // BT.601 in 1/64 steps; every product fits into 16 bits.
        const int y = (luma[x] - 16) * 75 + 32;
        const int u = blue[x] - 128;
        const int v = red[x] - 128;
        out[4 * x] = clamped((y + u * 129) >> 6);
        out[4 * x + 1] = clamped((y - u * 25 - v * 52) >> 6);
        out[4 * x + 2] = clamped((y + v * 102) >> 6);
        out[4 * x + 3] = 0xFF;
    }
}

/// `bytes` a pixel, the first of the colours at `blueAt`, green after or before it, red at `redAt`.
void copyColors(const std::uint8_t* row, std::size_t bytes, std::size_t blueAt, std::size_t redAt,
                std::size_t step, std::size_t count, std::uint8_t* out) {
    for (std::size_t x = 0; x < count; ++x) {
        const auto* pixel = row + x * step * bytes;
        out[4 * x] = pixel[blueAt];
        out[4 * x + 1] = pixel[1];
        out[4 * x + 2] = pixel[redAt];
        out[4 * x + 3] = 0xFF;
    }
}

void copyGray(const Samples& samples, std::uint8_t* out) {
    for (std::size_t x = 0; x < samples.luma.size(); ++x) {
        std::fill_n(out + 4 * x, 3, samples.luma[x]);
        out[4 * x + 3] = 0xFF;
    }
}

void makeRow(PixelLayout layout, const Planes& planes, std::size_t y, std::size_t step, Samples& samples,
             std::uint8_t* out) {
    const auto from = y * step;
    const auto* row = planes[0].row(from);
    const auto* next = step == 1 ? row : planes[0].row(from + 1);
    switch (layout) {
    case PixelLayout::yuyv:
        gatherPacked(row, next, 0, step, samples);
        break;
    case PixelLayout::uyvy:
        gatherPacked(row, next, 1, step, samples);
        break;
    case PixelLayout::nv12:
        gatherLuma(row, next, step, samples);
        gatherChroma(planes[1].row(from / 2), planes[1].row(from / 2) + 1, 2, step, samples);
        break;
    case PixelLayout::yuv420:
        gatherLuma(row, next, step, samples);
        gatherChroma(planes[1].row(from / 2), planes[2].row(from / 2), 1, step, samples);
        break;
    case PixelLayout::gray:
        gatherLuma(row, next, step, samples);
        copyGray(samples, out);
        return;
    case PixelLayout::bgrx:
        copyColors(row, 4, 0, 2, step, samples.luma.size(), out);
        return;
    case PixelLayout::rgbx:
        copyColors(row, 4, 2, 0, step, samples.luma.size(), out);
        return;
    case PixelLayout::bgr:
        copyColors(row, 3, 0, 2, step, samples.luma.size(), out);
        return;
    case PixelLayout::rgb:
        copyColors(row, 3, 2, 0, step, samples.luma.size(), out);
        return;
    case PixelLayout::jpeg:
        return;
    }
    convert(samples, out);
}

} // namespace

std::shared_ptr<const Platform::Picture> pictureOfRawFrame(const VideoFrame& frame, int reduction) {
    const auto& format = frame.format;
    if (format.layout == PixelLayout::jpeg || format.width < reduction || format.height < reduction ||
        format.width > largestFrameSide || format.height > largestFrameSide) {
        return nullptr;
    }
    const auto planes = planesOf(frame);
    if (!planes) {
        return nullptr;
    }
    auto picture = std::make_shared<Platform::Picture>();
    picture->width = format.width / reduction;
    picture->height = format.height / reduction;
    const auto width = static_cast<std::size_t>(picture->width);
    const auto height = static_cast<std::size_t>(picture->height);
    picture->pixels.resize(width * height * 4);
    Samples samples(width);
    for (std::size_t y = 0; y < height; ++y) {
        makeRow(format.layout, *planes, y, static_cast<std::size_t>(reduction), samples,
                reinterpret_cast<std::uint8_t*>(picture->pixels.data()) + y * width * 4);
    }
    return picture;
}

} // namespace LinuxPlatform
