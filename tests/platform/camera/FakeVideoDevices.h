#pragma once

#include "platform/linux/camera/VideoDeviceCalls.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <poll.h>

namespace TestSupport {

/// A video device that answers as a kernel driver does. Guarded by the lock of its devices.
struct FakeVideoDevice {
    std::string card = "Camera";
    std::string bus = "usb-1";
    std::uint32_t abilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<std::uint32_t> formats{V4L2_PIX_FMT_YUYV, V4L2_PIX_FMT_MJPEG};
    /// Whether ever more of one that nobody knows follow.
    bool hasEndlessFormats = false;
    bool isAllowed = true;
    /// Whether another program uses it.
    bool isBusy = false;
    /// What the next frames are; the device waits when there is none.
    std::deque<std::vector<std::byte>> frames;
    bool marksFramesAsBroken = false;
    /// Where the next frames are said to be, other than in the buffers that there are.
    std::optional<std::uint32_t> inventedBuffer;
    /// The error of everything that is asked of an open device, when it is not 0.
    int failure = 0;
    /// What the driver makes of the size that is asked for; as asked when 0.
    std::uint32_t forcedWidth = 0;
    std::uint32_t forcedHeight = 0;
    std::uint32_t bytesPerLine = 0;
    /// What the driver says of colours.
    std::uint32_t colorspace = V4L2_COLORSPACE_DEFAULT;
    std::uint32_t encoding = V4L2_YCBCR_ENC_DEFAULT;
    std::uint32_t quantization = V4L2_QUANTIZATION_DEFAULT;

    v4l2_pix_format format{};
    bool isStreaming = false;
    std::deque<std::uint32_t> queued;
    std::vector<std::vector<std::byte>> buffers;
};

/// Video devices of the test's own.
class FakeVideoDevices : public LinuxPlatform::VideoDeviceCalls {
public:
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<FakeVideoDevice>> byPath;
    int opened = 0;
    int mapped = 0;
    /// How many wait for a driver that takes its time.
    std::atomic<int> waitingToOpen = 0;

    void holdUpOpening(bool isHeldUp) {
        isHeldUp_ = isHeldUp;
        isHeldUp_.notify_all();
    }

    std::vector<std::string> devices() override {
        const std::scoped_lock lock(mutex);
        std::vector<std::string> paths;
        for (const auto& [path, device] : byPath) {
            paths.push_back(path);
        }
        return paths;
    }

    int watch() override { return watched; }

    void takeNews(int) override {
        const std::scoped_lock lock(mutex);
        seen_ = state();
    }

    bool isAllowed(const std::string& path) override {
        const std::scoped_lock lock(mutex);
        return byPath.at(path)->isAllowed;
    }

    int open(const std::string& path) override {
        ++waitingToOpen;
        isHeldUp_.wait(true);
        --waitingToOpen;
        const std::scoped_lock lock(mutex);
        const auto found = byPath.find(path);
        if (found == byPath.end()) {
            return -ENODEV;
        }
        if (!found->second->isAllowed) {
            return -EACCES;
        }
        ++opened;
        open_[++lastDescriptor_] = found->second;
        return lastDescriptor_;
    }

    void close(int device) override {
        const std::scoped_lock lock(mutex);
        if (device == watched) {
            return;
        }
        --opened;
        open_.erase(device);
    }

    int control(int descriptor, unsigned long request, void* argument) override {
        const std::scoped_lock lock(mutex);
        const auto found = open_.find(descriptor);
        if (found == open_.end()) {
            return -EBADF;
        }
        auto& device = *found->second;
        return device.failure != 0 ? -device.failure : answer(device, request, argument);
    }

    std::span<std::byte> map(int descriptor, std::size_t, std::int64_t offset) override {
        const std::scoped_lock lock(mutex);
        ++mapped;
        return open_.at(descriptor)->buffers.at(static_cast<std::size_t>(offset));
    }

    void unmap(std::span<std::byte>) override {
        const std::scoped_lock lock(mutex);
        --mapped;
    }

    bool wait(int descriptor, int wakeUp, std::chrono::milliseconds time) override {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
            {
                const std::scoped_lock lock(mutex);
                if (descriptor == watched && seen_ != state()) {
                    return true;
                }
                const auto found = open_.find(descriptor);
                if (found != open_.end() && (found->second->failure != 0 || !found->second->frames.empty())) {
                    return true;
                }
            }
            pollfd signal{wakeUp, POLLIN, 0};
            if (poll(&signal, 1, 1) > 0) {
                return false;
            }
        }
        return false;
    }

private:
    /// The descriptor of the folder of devices.
    static constexpr int watched = 99;

    /// What can be seen from outside: the devices, and whether they may be opened.
    std::map<std::string, bool> state() const {
        std::map<std::string, bool> all;
        for (const auto& [path, device] : byPath) {
            all[path] = device->isAllowed;
        }
        return all;
    }

    static int answer(FakeVideoDevice& device, unsigned long request, void* argument) {
        switch (request) {
        case VIDIOC_QUERYCAP: {
            auto& capability = *static_cast<v4l2_capability*>(argument);
            copy(device.card, capability.card);
            copy(device.bus, capability.bus_info);
            capability.capabilities = device.abilities | V4L2_CAP_DEVICE_CAPS | V4L2_CAP_VIDEO_CAPTURE;
            capability.device_caps = device.abilities;
            return 0;
        }
        case VIDIOC_ENUM_FMT: {
            auto& format = *static_cast<v4l2_fmtdesc*>(argument);
            const bool isKnown = format.index < device.formats.size();
            format.pixelformat = isKnown ? device.formats[format.index] : V4L2_PIX_FMT_HSV32;
            return isKnown || device.hasEndlessFormats ? 0 : -EINVAL;
        }
        case VIDIOC_S_FMT: {
            if (device.isBusy) {
                return -EBUSY;
            }
            auto& format = *static_cast<v4l2_format*>(argument);
            if (device.forcedWidth != 0) {
                format.fmt.pix.width = device.forcedWidth;
                format.fmt.pix.height = device.forcedHeight;
            }
            format.fmt.pix.bytesperline = device.bytesPerLine;
            format.fmt.pix.colorspace = device.colorspace;
            format.fmt.pix.ycbcr_enc = device.encoding;
            format.fmt.pix.quantization = device.quantization;
            device.format = format.fmt.pix;
            return 0;
        }
        case VIDIOC_REQBUFS: {
            auto& buffers = *static_cast<v4l2_requestbuffers*>(argument);
            device.queued.clear();
            device.buffers.assign(buffers.count, std::vector<std::byte>(1 << 20));
            return 0;
        }
        case VIDIOC_QUERYBUF: {
            auto& buffer = *static_cast<v4l2_buffer*>(argument);
            buffer.length = static_cast<std::uint32_t>(device.buffers.at(buffer.index).size());
            buffer.m.offset = buffer.index;
            return 0;
        }
        case VIDIOC_QBUF:
            device.queued.push_back(static_cast<v4l2_buffer*>(argument)->index);
            return 0;
        case VIDIOC_DQBUF: {
            if (device.frames.empty() || device.queued.empty()) {
                return -EAGAIN;
            }
            auto& buffer = *static_cast<v4l2_buffer*>(argument);
            buffer.index = device.queued.front();
            device.queued.pop_front();
            const auto frame = std::move(device.frames.front());
            device.frames.pop_front();
            std::ranges::copy(frame, device.buffers.at(buffer.index).begin());
            buffer.bytesused = static_cast<std::uint32_t>(frame.size());
            buffer.flags = device.marksFramesAsBroken ? V4L2_BUF_FLAG_ERROR : 0U;
            buffer.index = device.inventedBuffer.value_or(buffer.index);
            return 0;
        }
        case VIDIOC_STREAMON:
            device.isStreaming = true;
            return 0;
        case VIDIOC_STREAMOFF:
            device.isStreaming = false;
            return 0;
        case VIDIOC_S_PARM:
            return -ENOTTY;
        default:
            return -ENOTTY;
        }
    }

    template <std::size_t Size>
    static void copy(const std::string& text, std::uint8_t (&field)[Size]) {
        std::memcpy(field, text.data(), std::min(text.size(), Size - 1));
    }

    std::map<int, std::shared_ptr<FakeVideoDevice>> open_;
    int lastDescriptor_ = 100;
    std::map<std::string, bool> seen_;
    std::atomic<bool> isHeldUp_ = false;
};

} // namespace TestSupport
