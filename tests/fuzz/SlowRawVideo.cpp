#include "tests/fuzz/SlowRawVideo.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace Fuzz {
namespace {

using LinuxPlatform::ColorMatrix;
using LinuxPlatform::ColorRange;
using LinuxPlatform::PixelLayout;
using LinuxPlatform::VideoFrame;

struct Area {
    std::span<const std::byte> data;
    std::size_t stride = 0;
    std::size_t rowSize = 0;
    std::size_t rows = 0;

    bool isLargeEnough() const {
        return stride >= rowSize && (rows == 0 || (rows - 1) * stride + rowSize <= data.size());
    }
    int at(std::size_t row, std::size_t column) const {
        return std::to_integer<int>(data[row * stride + column]);
    }
    std::span<const std::byte> behind() const { return data.subspan(std::min(rows * stride, data.size())); }
};

/// A pixel's values, luma and both chromas or blue, green and red.
using Values = std::array<int, 3>;

struct Place {
    std::size_t x = 0;
    std::size_t y = 0;
};

std::size_t half(std::size_t size) {
    return size / 2 + size % 2;
}

class Frame {
public:
    explicit Frame(const VideoFrame& frame) : layout_(frame.format.layout) {
        const auto width = static_cast<std::size_t>(frame.format.width);
        const auto height = static_cast<std::size_t>(frame.format.height);
        add(frame, 0, bytesInRow(width), height);
        if (layout_ == PixelLayout::nv12) {
            add(frame, 1, half(width) * 2, half(height));
        } else if (layout_ == PixelLayout::yuv420) {
            add(frame, 1, half(width), half(height));
            add(frame, 2, half(width), half(height));
        }
    }

    bool isLargeEnough() const { return std::ranges::all_of(areas_, &Area::isLargeEnough); }

    Values at(const Place& place) const {
        const auto [x, y] = place;
        const auto& first = areas_[0];
        switch (layout_) {
        case PixelLayout::yuyv:
            return {first.at(y, 2 * x), first.at(y, x / 2 * 4 + 1), first.at(y, x / 2 * 4 + 3)};
        case PixelLayout::uyvy:
            return {first.at(y, 2 * x + 1), first.at(y, x / 2 * 4), first.at(y, x / 2 * 4 + 2)};
        case PixelLayout::nv12:
            return {first.at(y, x), areas_[1].at(y / 2, x / 2 * 2), areas_[1].at(y / 2, x / 2 * 2 + 1)};
        case PixelLayout::yuv420:
            return {first.at(y, x), areas_[1].at(y / 2, x / 2), areas_[2].at(y / 2, x / 2)};
        case PixelLayout::bgrx:
            return {first.at(y, 4 * x), first.at(y, 4 * x + 1), first.at(y, 4 * x + 2)};
        case PixelLayout::rgbx:
            return {first.at(y, 4 * x + 2), first.at(y, 4 * x + 1), first.at(y, 4 * x)};
        case PixelLayout::bgr:
            return {first.at(y, 3 * x), first.at(y, 3 * x + 1), first.at(y, 3 * x + 2)};
        case PixelLayout::rgb:
            return {first.at(y, 3 * x + 2), first.at(y, 3 * x + 1), first.at(y, 3 * x)};
        case PixelLayout::gray:
        case PixelLayout::jpeg:
            break;
        }
        return {first.at(y, x), first.at(y, x), first.at(y, x)};
    }

private:
    std::size_t bytesInRow(std::size_t width) const {
        switch (layout_) {
        case PixelLayout::yuyv:
        case PixelLayout::uyvy:
            return half(width) * 4;
        case PixelLayout::bgrx:
        case PixelLayout::rgbx:
            return width * 4;
        case PixelLayout::bgr:
        case PixelLayout::rgb:
            return width * 3;
        default:
            return width;
        }
    }

    void add(const VideoFrame& frame, std::size_t index, std::size_t rowSize, std::size_t rows) {
        const auto& given = frame.planes[index];
        Area area{given.data, static_cast<std::size_t>(std::max(given.stride, 0)), rowSize, rows};
        const bool isBehind = index > 0 && given.data.empty();
        if (isBehind) {
            area.data = areas_[index - 1].behind();
        }
        // Planes behind one another share the shape of the first one's rows; some producers say the first
        // one's stride of all of them.
        if (isBehind || (index > 0 && area.stride == areas_[0].stride && !area.isLargeEnough())) {
            area.stride = areas_[0].stride * rowSize / areas_[0].rowSize;
        }
        if (area.stride == 0) {
            area.stride = rowSize;
        }
        areas_[index] = area;
    }

    PixelLayout layout_;
    std::array<Area, 3> areas_;
};

Values meanOf(const Frame& frame, const Place& first, std::size_t side) {
    Values sums{};
    for (std::size_t y = 0; y < side; ++y) {
        for (std::size_t x = 0; x < side; ++x) {
            const auto values = frame.at({first.x + x, first.y + y});
            std::ranges::transform(sums, values, sums.begin(), std::plus{});
        }
    }
    const auto count = static_cast<int>(side * side);
    std::ranges::transform(sums, sums.begin(), [count](int sum) { return (sum + count / 2) / count; });
    return sums;
}

std::uint8_t byteOf(double part) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

std::array<std::uint8_t, 3> colorOf(const Values& values, ColorRange range, ColorMatrix matrix) {
    const bool isFull = range == ColorRange::full;
    const double luma = isFull ? values[0] / 255.0 : (values[0] - 16) / 219.0;
    const double blue = (values[1] - 128) / (isFull ? 255.0 : 224.0);
    const double red = (values[2] - 128) / (isFull ? 255.0 : 224.0);
    const double ofRed = matrix == ColorMatrix::bt709 ? 0.2126 : 0.299;
    const double ofBlue = matrix == ColorMatrix::bt709 ? 0.0722 : 0.114;
    const double r = luma + 2 * (1 - ofRed) * red;
    const double b = luma + 2 * (1 - ofBlue) * blue;
    const double g = (luma - ofRed * r - ofBlue * b) / (1 - ofRed - ofBlue);
    return {byteOf(b), byteOf(g), byteOf(r)};
}

bool hasLuma(PixelLayout layout) {
    return layout == PixelLayout::yuyv || layout == PixelLayout::uyvy || layout == PixelLayout::nv12 ||
           layout == PixelLayout::yuv420;
}

} // namespace

std::optional<std::vector<std::uint8_t>> slowPicture(const VideoFrame& frame, int reduction) {
    const auto& format = frame.format;
    if (format.layout == PixelLayout::jpeg || format.width < reduction || format.height < reduction) {
        return std::nullopt;
    }
    const Frame source(frame);
    if (!source.isLargeEnough()) {
        return std::nullopt;
    }
    const auto side = static_cast<std::size_t>(reduction);
    std::vector<std::uint8_t> picture;
    for (std::size_t y = 0; y < static_cast<std::size_t>(format.height / reduction); ++y) {
        for (std::size_t x = 0; x < static_cast<std::size_t>(format.width / reduction); ++x) {
            const auto mean = meanOf(source, {x * side, y * side}, side);
            const auto color = hasLuma(format.layout) ? colorOf(mean, format.range, format.matrix)
                                                      : std::array{static_cast<std::uint8_t>(mean[0]),
                                                                   static_cast<std::uint8_t>(mean[1]),
                                                                   static_cast<std::uint8_t>(mean[2])};
            picture.insert(picture.end(), color.begin(), color.end());
            picture.push_back(255);
        }
    }
    return picture;
}

} // namespace Fuzz
