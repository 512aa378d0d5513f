#include "platform/linux/camera/pipewire/PipeWireFormats.h"

#include <spa/param/video/format-utils.h>
#include <spa/pod/filter.h>

#include <algorithm>
#include <span>
#include <utility>

// The library's headers are C: casts and designators of their own macros are theirs.
#pragma GCC diagnostic ignored "-Wold-style-cast"
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace LinuxPlatform {
namespace {

/// Gray comes last: a camera that offers nothing else sees in infra-red.
constexpr std::array layouts{
    std::pair{SPA_VIDEO_FORMAT_YUY2, PixelLayout::yuyv},
    std::pair{SPA_VIDEO_FORMAT_UYVY, PixelLayout::uyvy},
    std::pair{SPA_VIDEO_FORMAT_NV12, PixelLayout::nv12},
    std::pair{SPA_VIDEO_FORMAT_I420, PixelLayout::yuv420},
    std::pair{SPA_VIDEO_FORMAT_BGRx, PixelLayout::bgrx},
    std::pair{SPA_VIDEO_FORMAT_BGRA, PixelLayout::bgrx},
    std::pair{SPA_VIDEO_FORMAT_RGBx, PixelLayout::rgbx},
    std::pair{SPA_VIDEO_FORMAT_RGBA, PixelLayout::rgbx},
    std::pair{SPA_VIDEO_FORMAT_BGR, PixelLayout::bgr},
    std::pair{SPA_VIDEO_FORMAT_RGB, PixelLayout::rgb},
    std::pair{SPA_VIDEO_FORMAT_GRAY8, PixelLayout::gray},
};

struct Sizes {
    spa_rectangle preferred;
    spa_rectangle least;
    spa_rectangle most;
};

void addSizeAndRate(spa_pod_builder& builder, const Sizes& sizes, std::uint32_t leastRate) {
    const spa_fraction usual{30, 1};
    const spa_fraction least{leastRate, 1};
    const spa_fraction most{240, 1};
    spa_pod_builder_add(&builder, SPA_FORMAT_VIDEO_size,
                        SPA_POD_CHOICE_RANGE_Rectangle(&sizes.preferred, &sizes.least, &sizes.most),
                        SPA_FORMAT_VIDEO_framerate, SPA_POD_CHOICE_RANGE_Fraction(&usual, &least, &most), 0);
}

using RawLayouts = std::span<const std::pair<spa_video_format, PixelLayout>>;

const spa_pod* offer(spa_pod_builder& builder, RawLayouts rawLayouts, const Sizes& sizes,
                     std::uint32_t leastRate) {
    const auto subtype = rawLayouts.empty() ? SPA_MEDIA_SUBTYPE_mjpg : SPA_MEDIA_SUBTYPE_raw;
    spa_pod_frame object;
    spa_pod_builder_push_object(&builder, &object, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat);
    spa_pod_builder_add(&builder, SPA_FORMAT_mediaType, SPA_POD_Id(SPA_MEDIA_TYPE_video),
                        SPA_FORMAT_mediaSubtype, SPA_POD_Id(subtype), 0);
    if (subtype == SPA_MEDIA_SUBTYPE_raw) {
        spa_pod_frame choice;
        spa_pod_builder_prop(&builder, SPA_FORMAT_VIDEO_format, 0);
        spa_pod_builder_push_choice(&builder, &choice, SPA_CHOICE_Enum, 0);
        // The first one is the default, the others are the choices.
        spa_pod_builder_id(&builder, rawLayouts.front().first);
        for (const auto& [id, layout] : rawLayouts) {
            spa_pod_builder_id(&builder, id);
        }
        spa_pod_builder_pop(&builder, &choice);
    }
    addSizeAndRate(builder, sizes, leastRate);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &object));
}

std::optional<PixelLayout> layoutOf(spa_video_format format) {
    for (const auto& [id, layout] : layouts) {
        if (id == format) {
            return layout;
        }
    }
    return std::nullopt;
}

ColorRange rangeOf(spa_video_color_range range) {
    return range == SPA_VIDEO_COLOR_RANGE_0_255 ? ColorRange::full : ColorRange::limited;
}

ColorMatrix matrixOf(spa_video_color_matrix matrix) {
    return matrix == SPA_VIDEO_COLOR_MATRIX_BT709 ? ColorMatrix::bt709 : ColorMatrix::bt601;
}

std::optional<VideoFormat> checked(PixelLayout layout, const spa_rectangle& size) {
    if (size.width == 0 || size.height == 0 || size.width > largestFrameSide ||
        size.height > largestFrameSide) {
        return std::nullopt;
    }
    return VideoFormat{layout, static_cast<int>(size.width), static_cast<int>(size.height)};
}

} // namespace

PipeWireFormats::PipeWireFormats(Layouts which) {
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, memory_.data(), static_cast<std::uint32_t>(memory_.size()));
    constexpr spa_rectangle hd{1280, 720};
    constexpr spa_rectangle fullHd{1920, 1080};
    constexpr spa_rectangle least{1, 1};
    constexpr spa_rectangle most{largestFrameSide, largestFrameSide};
    constexpr RawLayouts jpeg;
    const auto raw = RawLayouts(layouts).first(layouts.size() - (which == Layouts::color ? 1 : 0));
    // Uncompressed pictures of a good size come through USB at a few a second, so JPEG goes first, and small
    // before slow.
    offers_ = {
        offer(builder, jpeg, {hd, hd, hd}, 15),     offer(builder, jpeg, {hd, least, fullHd}, 15),
        offer(builder, raw, {hd, hd, hd}, 24),      offer(builder, raw, {hd, least, fullHd}, 15),
        offer(builder, jpeg, {hd, least, most}, 0), offer(builder, raw, {hd, least, most}, 0),
    };
}

bool PipeWireFormats::matches(const spa_pod* format) const {
    return format && std::ranges::any_of(offers_, [&](const spa_pod* offer) {
               // What both have in common is no larger than the two.
               std::vector<std::uint8_t> memory(SPA_POD_SIZE(format) + SPA_POD_SIZE(offer));
               spa_pod_builder builder{};
               spa_pod_builder_init(&builder, memory.data(), static_cast<std::uint32_t>(memory.size()));
               spa_pod* common = nullptr;
               return spa_pod_filter(&builder, &common, format, offer) >= 0;
           });
}

std::optional<VideoFormat> PipeWireFormats::parse(const spa_pod* format) {
    std::uint32_t type = 0;
    std::uint32_t subtype = 0;
    if (!format || spa_format_parse(format, &type, &subtype) < 0 || type != SPA_MEDIA_TYPE_video) {
        return std::nullopt;
    }
    if (subtype == SPA_MEDIA_SUBTYPE_mjpg) {
        spa_video_info_mjpg info{};
        return spa_format_video_mjpg_parse(format, &info) < 0 ? std::nullopt
                                                              : checked(PixelLayout::jpeg, info.size);
    }
    if (subtype == SPA_MEDIA_SUBTYPE_raw) {
        spa_video_info_raw info{};
        if (spa_format_video_raw_parse(format, &info) >= 0) {
            if (const auto layout = layoutOf(info.format)) {
                auto known = checked(*layout, info.size);
                if (known) {
                    known->range = rangeOf(info.color_range);
                    known->matrix = matrixOf(info.color_matrix);
                }
                return known;
            }
        }
    }
    return std::nullopt;
}

} // namespace LinuxPlatform
