#include "platform/linux/camera/V4l2Device.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t bufferCount = 4;
constexpr std::uint32_t mostFormats = 64;

/// Best first.
constexpr std::array layouts{
    std::pair{std::uint32_t{V4L2_PIX_FMT_MJPEG}, PixelLayout::jpeg},
    std::pair{std::uint32_t{V4L2_PIX_FMT_JPEG}, PixelLayout::jpeg},
    std::pair{std::uint32_t{V4L2_PIX_FMT_YUYV}, PixelLayout::yuyv},
    std::pair{std::uint32_t{V4L2_PIX_FMT_UYVY}, PixelLayout::uyvy},
    std::pair{std::uint32_t{V4L2_PIX_FMT_NV12}, PixelLayout::nv12},
    std::pair{std::uint32_t{V4L2_PIX_FMT_YUV420}, PixelLayout::yuv420},
    std::pair{std::uint32_t{V4L2_PIX_FMT_XBGR32}, PixelLayout::bgrx},
    std::pair{std::uint32_t{V4L2_PIX_FMT_BGR24}, PixelLayout::bgr},
    std::pair{std::uint32_t{V4L2_PIX_FMT_RGB24}, PixelLayout::rgb},
    std::pair{std::uint32_t{V4L2_PIX_FMT_GREY}, PixelLayout::gray},
};

std::optional<PixelLayout> layoutOf(std::uint32_t format) {
    const auto* const found = std::ranges::find(layouts, format, [](const auto& pair) { return pair.first; });
    return found == layouts.end() ? std::nullopt : std::optional(found->second);
}

/// The driver's answer or, where it leaves that open, what the kernel's own rules say.
std::uint32_t encodingOf(const v4l2_pix_format& format) {
    return format.ycbcr_enc != V4L2_YCBCR_ENC_DEFAULT
               ? format.ycbcr_enc
               : static_cast<std::uint32_t>(V4L2_MAP_YCBCR_ENC_DEFAULT(format.colorspace));
}

ColorMatrix matrixOf(const v4l2_pix_format& format) {
    const auto encoding = encodingOf(format);
    return encoding == V4L2_YCBCR_ENC_709 || encoding == V4L2_YCBCR_ENC_XV709 ? ColorMatrix::bt709
                                                                              : ColorMatrix::bt601;
}

ColorRange rangeOf(const v4l2_pix_format& format) {
    const auto quantization = format.quantization != V4L2_QUANTIZATION_DEFAULT
                                  ? format.quantization
                                  : static_cast<std::uint32_t>(V4L2_MAP_QUANTIZATION_DEFAULT(
                                        false, format.colorspace, encodingOf(format)));
    return quantization == V4L2_QUANTIZATION_FULL_RANGE ? ColorRange::full : ColorRange::limited;
}

V4l2Device::Start startOf(int result) {
    return result >= 0        ? V4l2Device::Start::begun
           : result == -EBUSY ? V4l2Device::Start::busy
                              : V4l2Device::Start::failed;
}

std::string textOf(std::span<const std::uint8_t> field) {
    return {field.begin(), std::ranges::find(field, 0)};
}

} // namespace

V4l2Device::V4l2Device(VideoDeviceCalls& calls, const std::string& path)
    : calls_(calls),
      device_(calls.open(path)) {}

V4l2Device::~V4l2Device() {
    if (isStreaming_) {
        int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        calls_.control(device_, VIDIOC_STREAMOFF, &type);
    }
    for (const auto buffer : buffers_) {
        calls_.unmap(buffer);
    }
    if (device_ >= 0) {
        calls_.close(device_);
    }
}

std::optional<V4l2Device::Description> V4l2Device::describe() {
    v4l2_capability capability{};
    if (device_ < 0 || calls_.control(device_, VIDIOC_QUERYCAP, &capability) < 0) {
        return std::nullopt;
    }
    const auto abilities = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps
                                                                                 : capability.capabilities;
    constexpr std::uint32_t needed = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    const auto best = (abilities & needed) == needed ? bestFormat() : std::nullopt;
    if (!best) {
        return std::nullopt;
    }
    return Description{textOf(capability.card), textOf(capability.bus_info), *best == V4L2_PIX_FMT_GREY};
}

V4l2Device::Start V4l2Device::start() {
    if (device_ < 0) {
        return startOf(device_);
    }
    const auto best = bestFormat();
    if (!best) {
        return Start::failed;
    }
    if (const int result = chooseFormat(*best); result < 0) {
        return startOf(result);
    }
    if (const int result = mapBuffers(); result < 0) {
        return startOf(result);
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    const int result = calls_.control(device_, VIDIOC_STREAMON, &type);
    isStreaming_ = result >= 0;
    return startOf(result);
}

int V4l2Device::chooseFormat(std::uint32_t pixelFormat) {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    const bool isJpeg = layoutOf(pixelFormat) == PixelLayout::jpeg;
    // Uncompressed pictures of a good size come through USB at a few a second.
    format.fmt.pix.width = isJpeg ? 1280 : 640;
    format.fmt.pix.height = isJpeg ? 720 : 480;
    format.fmt.pix.pixelformat = pixelFormat;
    format.fmt.pix.field = V4L2_FIELD_ANY;
    if (const int result = calls_.control(device_, VIDIOC_S_FMT, &format); result < 0) {
        return result;
    }
    const auto& chosen = format.fmt.pix;
    const auto layout = layoutOf(chosen.pixelformat);
    if (!layout || chosen.width == 0 || chosen.height == 0 || chosen.width > largestFrameSide ||
        chosen.height > largestFrameSide) {
        return -EINVAL;
    }
    format_ = {*layout, static_cast<int>(chosen.width), static_cast<int>(chosen.height), rangeOf(chosen),
               matrixOf(chosen)};
    stride_ = *layout == PixelLayout::jpeg ? 0 : static_cast<int>(chosen.bytesperline);
    v4l2_streamparm rate{};
    rate.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    rate.parm.capture.timeperframe = {1, 30};
    // A camera that has one rate only may refuse.
    calls_.control(device_, VIDIOC_S_PARM, &rate);
    return 0;
}

V4l2Device::Turn V4l2Device::next(int wakeUp, std::chrono::milliseconds time,
                                  const std::function<void(const VideoFrame&)>& deliver) {
    if (!calls_.wait(device_, wakeUp, time)) {
        return Turn::nothing;
    }
    std::optional<v4l2_buffer> newest;
    // A driver that is faster than this loop must not keep it from delivering.
    for (std::size_t count = 0; count < buffers_.size(); ++count) {
        v4l2_buffer buffer{};
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        if (const int result = calls_.control(device_, VIDIOC_DQBUF, &buffer); result < 0) {
            if (result == -EAGAIN) {
                break;
            }
            return Turn::failed;
        }
        if (buffer.index >= buffers_.size()) {
            return Turn::failed;
        }
        const bool isSound = (buffer.flags & V4L2_BUF_FLAG_ERROR) == 0 && buffer.bytesused > 0;
        const auto done = isSound ? std::exchange(newest, buffer) : std::optional(buffer);
        if (done && !queue(done->index)) {
            return Turn::failed;
        }
    }
    if (!newest) {
        return Turn::nothing;
    }
    const auto memory = buffers_[newest->index];
    const auto used = std::min<std::size_t>(newest->bytesused, memory.size());
    deliver({format_, {VideoPlane{memory.first(used), stride_}}});
    return queue(newest->index) ? Turn::frame : Turn::failed;
}

std::optional<std::uint32_t> V4l2Device::bestFormat() {
    std::optional<std::size_t> best;
    for (std::uint32_t index = 0; index < mostFormats; ++index) {
        v4l2_fmtdesc format{};
        format.index = index;
        format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        if (calls_.control(device_, VIDIOC_ENUM_FMT, &format) < 0) {
            break;
        }
        for (std::size_t rank = 0; rank < best.value_or(layouts.size()); ++rank) {
            if (layouts[rank].first == format.pixelformat) {
                best = rank;
            }
        }
    }
    return best ? std::optional(layouts[*best].first) : std::nullopt;
}

int V4l2Device::mapBuffers() {
    v4l2_requestbuffers request{};
    request.count = bufferCount;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    if (const int result = calls_.control(device_, VIDIOC_REQBUFS, &request); result < 0) {
        return result;
    }
    for (std::uint32_t index = 0; index < request.count; ++index) {
        v4l2_buffer buffer{};
        buffer.index = index;
        buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        if (const int result = calls_.control(device_, VIDIOC_QUERYBUF, &buffer); result < 0) {
            return result;
        }
        const auto memory = calls_.map(device_, buffer.length, buffer.m.offset);
        if (memory.empty()) {
            return -ENOMEM;
        }
        buffers_.push_back(memory);
        if (!queue(index)) {
            return -ENOMEM;
        }
    }
    return buffers_.empty() ? -ENOMEM : 0;
}

bool V4l2Device::queue(std::uint32_t index) {
    v4l2_buffer buffer{};
    buffer.index = index;
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    return calls_.control(device_, VIDIOC_QBUF, &buffer) >= 0;
}

} // namespace LinuxPlatform
