#include "platform/linux/camera/Upright.h"

#include <cstddef>
#include <cstring>

namespace LinuxPlatform {

std::shared_ptr<const Platform::Picture> upright(std::shared_ptr<const Platform::Picture> picture,
                                                 const Orientation& orientation) {
    if (!picture || orientation.isUpright()) {
        return picture;
    }
    constexpr std::ptrdiff_t pixelSize = 4;
    const bool isOnItsSide = orientation.quarterTurns % 2 != 0;
    auto turned = std::make_shared<Platform::Picture>();
    turned->width = isOnItsSide ? picture->height : picture->width;
    turned->height = isOnItsSide ? picture->width : picture->height;
    turned->pixels.resize(picture->pixels.size());
    // Where the upright picture's first pixel is, and from one to the next in a row and in a column.
    const std::ptrdiff_t row = picture->width * pixelSize;
    const std::ptrdiff_t lastColumn = row - pixelSize;
    const std::ptrdiff_t lastRow = (picture->height - 1) * row;
    std::ptrdiff_t first = 0;
    std::ptrdiff_t right = pixelSize;
    std::ptrdiff_t down = row;
    switch (orientation.quarterTurns) {
    case 1:
        first = lastRow;
        right = -row;
        down = pixelSize;
        break;
    case 2:
        first = lastRow + lastColumn;
        right = -pixelSize;
        down = -row;
        break;
    case 3:
        first = lastColumn;
        right = row;
        down = -pixelSize;
        break;
    default:
        break;
    }
    if (orientation.isMirrored) {
        first += right * (turned->width - 1);
        right = -right;
    }
    const auto* const from = picture->pixels.data() + first;
    auto* to = turned->pixels.data();
    for (std::ptrdiff_t y = 0; y < turned->height; ++y) {
        for (std::ptrdiff_t x = 0; x < turned->width; ++x, to += pixelSize) {
            std::memcpy(to, from + y * down + x * right, pixelSize);
        }
    }
    return turned;
}

} // namespace LinuxPlatform
