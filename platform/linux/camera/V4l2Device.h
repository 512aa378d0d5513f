#pragma once

#include "platform/linux/camera/VideoDeviceCalls.h"
#include "platform/linux/camera/VideoFrame.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// An open video device. One thread at a time.
class V4l2Device {
public:
    /// `calls` outlives the device. What cannot be opened answers nothing.
    V4l2Device(VideoDeviceCalls& calls, const std::string& path);
    V4l2Device(const V4l2Device&) = delete;
    V4l2Device& operator=(const V4l2Device&) = delete;
    ~V4l2Device();

    struct Description {
        std::string name;
        /// Where the camera is plugged in.
        std::string bus;
        /// Whether it has no layout with colours.
        bool isGray = false;
    };

    /// Absent for what is no camera with a layout that Curtain reads.
    std::optional<Description> describe();
    enum class Start { begun, busy, failed };
    /// Chooses the layout and begins to deliver.
    Start start();
    enum class Turn { frame, nothing, failed };
    /// Waits for a frame, at most until `wakeUp` is readable or the time is over, and hands the newest one
    /// on. Older ones that nobody took in time are dropped.
    Turn next(int wakeUp, std::chrono::milliseconds time,
              const std::function<void(const VideoFrame&)>& deliver);

private:
    std::optional<std::uint32_t> bestFormat();
    /// A result of the driver's, negative for an error.
    int chooseFormat(std::uint32_t pixelFormat);
    int mapBuffers();
    bool queue(std::uint32_t index);

    VideoDeviceCalls& calls_;
    int device_;
    VideoFormat format_;
    int stride_ = 0;
    bool isStreaming_ = false;
    std::vector<std::span<std::byte>> buffers_;
};

} // namespace LinuxPlatform
