#include "platform/qt/PictureFit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace QtPlatform {
namespace {

using Pixel = std::uint32_t;
using Row = std::vector<Pixel>;

/// Between two neighbours, in steps of 1/256 from the first to the second.
struct Place {
    std::size_t first = 0;
    std::size_t second = 0;
    std::uint32_t step = 0;
};

/// Where each of `count` pixels lies that share `length` pixels of the picture, of which there are `whole`.
std::vector<Place> places(double begin, double length, int count, int whole) {
    constexpr int steps = 256;
    const auto last = (whole - 1) * steps;
    std::vector<Place> places;
    places.reserve(static_cast<std::size_t>(count));
    for (int index = 0; index < count; ++index) {
        const double center = begin + (index + 0.5) * length / count - 0.5;
        const auto at = std::clamp(static_cast<int>(std::lround(center * steps)), 0, last);
        places.push_back({static_cast<std::size_t>(at / steps),
                          static_cast<std::size_t>(std::min(at / steps + 1, whole - 1)),
                          static_cast<std::uint32_t>(at % steps)});
    }
    return places;
}

/// Two of the four bytes at a time.
Pixel mixed(Pixel first, Pixel second, std::uint32_t step) {
    constexpr Pixel even = 0x00FF00FF;
    const Pixel low = ((first & even) * (256 - step) + (second & even) * step) >> 8U;
    const Pixel high = (first >> 8U & even) * (256 - step) + (second >> 8U & even) * step;
    return (low & even) | (high & ~even);
}

void readRow(const Platform::Picture& picture, std::size_t row, std::span<Pixel> pixels) {
    std::memcpy(pixels.data(), picture.pixels.data() + row * pixels.size_bytes(), pixels.size_bytes());
}

} // namespace

QImage fitted(const Platform::Picture& picture, const QRectF& part, const QSize& size, bool isMirrored) {
    auto columns = places(part.x(), part.width(), size.width(), picture.width);
    if (isMirrored) {
        std::ranges::reverse(columns);
    }
    QImage image(size, QImage::Format_RGB32);
    Row upper(static_cast<std::size_t>(picture.width));
    Row lower(upper.size());
    int y = 0;
    for (const auto& row : places(part.y(), part.height(), size.height(), picture.height)) {
        readRow(picture, row.first, upper);
        if (row.step > 0) {
            readRow(picture, row.second, lower);
            std::ranges::transform(upper, lower, upper.begin(),
                                   [&](Pixel first, Pixel second) { return mixed(first, second, row.step); });
        }
        auto* out = reinterpret_cast<Pixel*>(image.scanLine(y++));
        for (const auto& column : columns) {
            *out++ = mixed(upper[column.first], upper[column.second], column.step);
        }
    }
    return image;
}

} // namespace QtPlatform
