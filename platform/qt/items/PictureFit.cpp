#include "platform/qt/items/PictureFit.h"

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
/// The four bytes of a pixel with room between them, for sums and products of all at once.
using WidePixel = std::uint64_t;

/// Between two neighbours, in steps of 1/256 from the first to the second.
struct Place {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
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
        places.push_back({static_cast<std::uint32_t>(at / steps),
                          static_cast<std::uint32_t>(std::min(at / steps + 1, whole - 1)),
                          static_cast<std::uint32_t>(at % steps)});
    }
    return places;
}

constexpr WidePixel everyByte = 0x00FF00FF00FF00FF;

WidePixel widened(Pixel pixel) {
    return (pixel | static_cast<WidePixel>(pixel) << 24U) & everyByte;
}

Pixel narrowed(WidePixel pixel) {
    return static_cast<Pixel>(pixel | pixel >> 24U);
}

Pixel mixed(Pixel first, Pixel second, std::uint32_t step) {
    const auto from = widened(first);
    return narrowed(((from << 8U) + (widened(second) - from) * step) >> 8U & everyByte);
}

/// The bytes of two rows, mixed.
void mixRows(std::span<const std::byte> first, std::span<const std::byte> second, std::uint32_t step,
             std::span<std::byte> out) {
    std::transform(first.begin(), first.end(), second.begin(), out.begin(),
                   [step](std::byte one, std::byte other) {
                       return static_cast<std::byte>((std::to_integer<std::uint32_t>(one) * (256 - step) +
                                                      std::to_integer<std::uint32_t>(other) * step) >>
                                                     8U);
                   });
}

} // namespace

QImage fitted(const Platform::Picture& picture, const QRectF& part, const QSize& size, bool isMirrored) {
    auto columns = places(part.x(), part.width(), size.width(), picture.width);
    if (isMirrored) {
        std::ranges::reverse(columns);
    }
    QImage image(size, QImage::Format_RGB32);
    std::vector<Pixel> pixels(static_cast<std::size_t>(picture.width));
    const auto rowOf = [&](std::size_t row) {
        return std::span(picture.pixels)
            .subspan(row * pixels.size() * sizeof(Pixel), pixels.size() * sizeof(Pixel));
    };
    int y = 0;
    for (const auto& row : places(part.y(), part.height(), size.height(), picture.height)) {
        mixRows(rowOf(row.first), rowOf(row.second), row.step, std::as_writable_bytes(std::span(pixels)));
        const auto* in = pixels.data();
        auto* out = reinterpret_cast<Pixel*>(image.scanLine(y++));
        for (const auto& column : columns) {
            *out++ = mixed(in[column.first], in[column.second], column.step);
        }
    }
    return image;
}

} // namespace QtPlatform
