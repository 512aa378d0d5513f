#include "platform/linux/camera/RawVideo.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
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
        const auto isLargeEnough = [&] {
            return stride >= shape.bytesInRow && data.size() >= stride * (shape.rows - 1) + shape.bytesInRow;
        };
        const bool isBehind = index > 0 && data.empty();
        if (isBehind) {
            data = rest;
        }
        // Some producers say of every plane what is true of the first.
        if (isBehind || (index > 0 && stride == strideOfFirst && !isLargeEnough())) {
            stride = strideOfFirst * shape.bytesInRow / allShapes[0].bytesInRow;
        }
        if (stride == 0) {
            stride = shape.bytesInRow;
        }
        if (!isLargeEnough()) {
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

/// Where the samples of one kind are, such as those of the luma.
struct Channel {
    std::size_t plane = 0;
    /// Of the first one in a row, and from one to the next.
    std::size_t offset = 0;
    std::size_t spacing = 1;
    /// How many pixels of a row share one.
    std::size_t pixels = 1;
};

/// Luma, blue and red, or blue, green and red.
using Channels = std::array<Channel, 3>;

Channels channelsOf(PixelLayout layout) {
    switch (layout) {
    case PixelLayout::yuyv:
        return {{{0, 0, 2, 1}, {0, 1, 4, 2}, {0, 3, 4, 2}}};
    case PixelLayout::uyvy:
        return {{{0, 1, 2, 1}, {0, 0, 4, 2}, {0, 2, 4, 2}}};
    case PixelLayout::nv12:
        return {{{0, 0, 1, 1}, {1, 0, 2, 2}, {1, 1, 2, 2}}};
    case PixelLayout::yuv420:
        return {{{0, 0, 1, 1}, {1, 0, 1, 2}, {2, 0, 1, 2}}};
    case PixelLayout::bgrx:
        return {{{0, 0, 4, 1}, {0, 1, 4, 1}, {0, 2, 4, 1}}};
    case PixelLayout::rgbx:
        return {{{0, 2, 4, 1}, {0, 1, 4, 1}, {0, 0, 4, 1}}};
    case PixelLayout::bgr:
        return {{{0, 0, 3, 1}, {0, 1, 3, 1}, {0, 2, 3, 1}}};
    case PixelLayout::rgb:
        return {{{0, 2, 3, 1}, {0, 1, 3, 1}, {0, 0, 3, 1}}};
    case PixelLayout::gray:
    case PixelLayout::jpeg:
        break;
    }
    return {};
}

bool hasLuma(PixelLayout layout) {
    return layout == PixelLayout::yuyv || layout == PixelLayout::uyvy || layout == PixelLayout::nv12 ||
           layout == PixelLayout::yuv420;
}

/// Some rows of a plane, added up byte by byte.
struct RowSums {
    std::vector<std::uint16_t> sums;
    std::size_t rows = 1;
    /// Where the samples recur after four bytes: how many such neighbours are added up as well, 1, 2, 4 or 8.
    std::size_t groups = 1;

    void add(const Plane& plane, std::size_t first) {
        std::ranges::fill(sums, std::uint16_t{0});
        for (std::size_t row = first; row < first + rows; ++row) {
            const auto* bytes = plane.row(row);
            for (std::size_t at = 0; at < sums.size(); ++at) {
                sums[at] = static_cast<std::uint16_t>(sums[at] + bytes[at]);
            }
        }
        for (std::size_t added = 1, pairs = sums.size() / 8; added < groups; added *= 2, pairs /= 2) {
            addPairs(pairs);
        }
    }

private:
    /// Four sums at once, of which none outgrows its 16 bits.
    void addPairs(std::size_t pairs) {
        auto* bytes = reinterpret_cast<std::byte*>(sums.data());
        for (std::size_t index = 0; index < pairs; ++index) {
            std::array<std::uint64_t, 2> pair{};
            std::memcpy(pair.data(), bytes + index * sizeof pair, sizeof pair);
            pair[0] += pair[1];
            std::memcpy(bytes + index * sizeof pair[0], pair.data(), sizeof pair[0]);
        }
    }
};

/// The samples of one row of the picture, one of each channel a pixel, for loops that the compiler can
/// vectorise.
using Samples = std::array<std::vector<std::uint8_t>, 3>;

/// The means of that many samples in a row.
template <std::size_t across>
void average(const RowSums& from, const Channel& channel, std::span<std::uint8_t> out) {
    const auto count = static_cast<unsigned>(across * from.rows * from.groups);
    const auto shift = std::countr_zero(count);
    const auto spacing = channel.spacing;
    const auto* sums = from.sums.data() + channel.offset;
    auto* mean = out.data();
    for (const auto* const end = mean + out.size(); mean != end; ++mean) {
        unsigned sum = count / 2;
        for (std::size_t sample = 0; sample < across; ++sample, sums += spacing) {
            sum += *sums;
        }
        *mean = static_cast<std::uint8_t>(sum >> shift);
    }
}

void gather(const RowSums& from, const Channel& channel, std::size_t reduction, std::span<std::uint8_t> out) {
    switch (reduction / channel.pixels / from.groups) {
    case 0:
        // Two pixels share one.
        for (std::size_t x = 0; x < out.size(); ++x) {
            out[x] = static_cast<std::uint8_t>(from.sums[channel.offset + x / 2 * channel.spacing]);
        }
        break;
    case 1:
        average<1>(from, channel, out);
        break;
    case 2:
        average<2>(from, channel, out);
        break;
    case 4:
        average<4>(from, channel, out);
        break;
    default:
        average<8>(from, channel, out);
        break;
    }
}

/// Of the equations of ITU-R BT.601 and BT.709, in 1/64 steps; every sum of products spans less than 16 bits.
struct Coefficients {
    int black = 0;
    /// In 1/128 steps, so that white is white.
    int luma = 0;
    int blueToBlue = 0;
    int blueToGreen = 0;
    int redToGreen = 0;
    int redToRed = 0;
};

constexpr Coefficients limited601{16, 149, 129, 25, 52, 102};
constexpr Coefficients limited709{16, 149, 135, 14, 34, 115};
constexpr Coefficients full601{0, 128, 113, 22, 46, 90};
constexpr Coefficients full709{0, 128, 119, 12, 30, 101};

/// Keeps the sums above zero, so that 16 bits without a sign are enough for each.
constexpr int lift = 300;

std::uint32_t color(int sum) {
    const auto lifted = static_cast<std::int16_t>(static_cast<std::uint16_t>(sum) >> 6);
    return static_cast<std::uint8_t>(
        std::clamp<std::int16_t>(static_cast<std::int16_t>(lifted - lift), 0, 255));
}

template <Coefficients with>
void convert(const Samples& samples, std::uint8_t* out) {
    const auto count = samples[0].size();
    const auto* luma = samples[0].data();
    const auto* blue = samples[1].data();
    const auto* red = samples[2].data();
    constexpr int zero = 64 * lift + 32 - with.black * with.luma / 2;
    for (std::size_t x = 0; x < count; ++x) {
        const int y = luma[x] * (with.luma / 2) + (with.luma % 2 != 0 ? luma[x] >> 1 : 0) + zero;
        const int u = blue[x] - 128;
        const int v = red[x] - 128;
        // The lowest byte comes first in memory.
        const std::uint32_t pixel = color(y + u * with.blueToBlue) |
                                    color(y - u * with.blueToGreen - v * with.redToGreen) << 8U |
                                    color(y + v * with.redToRed) << 16U | 0xFFU << 24U;
        std::memcpy(out + 4 * x, &pixel, sizeof pixel);
    }
}

void interleave(const Samples& samples, std::uint8_t* out) {
    for (std::size_t x = 0; x < samples[0].size(); ++x) {
        out[4 * x] = samples[0][x];
        out[4 * x + 1] = samples[1][x];
        out[4 * x + 2] = samples[2][x];
        out[4 * x + 3] = 0xFF;
    }
}

using Conversion = void (*)(const Samples&, std::uint8_t*);

Conversion conversionOf(const VideoFormat& format) {
    if (!hasLuma(format.layout)) {
        return interleave;
    }
    if (format.range == ColorRange::full) {
        return format.matrix == ColorMatrix::bt709 ? convert<full709> : convert<full601>;
    }
    return format.matrix == ColorMatrix::bt709 ? convert<limited709> : convert<limited601>;
}

/// How many groups of four bytes one pixel of the picture comes from, where the layout has such.
std::size_t groupsIn(PixelLayout layout, std::size_t reduction) {
    switch (layout) {
    case PixelLayout::bgrx:
    case PixelLayout::rgbx:
        return reduction;
    case PixelLayout::yuyv:
    case PixelLayout::uyvy:
        return std::max<std::size_t>(reduction / 2, 1);
    default:
        return 1;
    }
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
    const auto step = static_cast<std::size_t>(reduction);
    const auto channels = channelsOf(format.layout);
    const auto planeShapes = shapes(format);
    std::array<RowSums, 3> sums;
    for (std::size_t plane = 0; plane < sums.size(); ++plane) {
        sums[plane].sums.resize(planeShapes[plane].bytesInRow);
        // The planes of the chroma have half as many rows.
        sums[plane].rows = plane == 0 ? step : std::max<std::size_t>(step / 2, 1);
        sums[plane].groups = groupsIn(format.layout, step);
    }
    const auto fillRow = conversionOf(format);
    Samples samples;
    samples.fill(std::vector<std::uint8_t>(width));
    auto* out = reinterpret_cast<std::uint8_t*>(picture->pixels.data());
    for (std::size_t y = 0; y < height; ++y, out += width * 4) {
        for (std::size_t plane = 0; plane < sums.size(); ++plane) {
            if (!sums[plane].sums.empty()) {
                sums[plane].add((*planes)[plane], plane == 0 ? y * step : y * step / 2);
            }
        }
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            gather(sums[channels[channel].plane], channels[channel], step, samples[channel]);
        }
        fillRow(samples, out);
    }
    return picture;
}

} // namespace LinuxPlatform
