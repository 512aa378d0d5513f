#pragma once

#include "platform/linux/camera/CameraStack.h"
#include "platform/linux/camera/VideoDeviceCalls.h"

#include <filesystem>
#include <memory>

namespace LinuxPlatform {

/// The kernel's video devices, read directly with memory-mapped buffers. A feed has a thread of its own.
class V4l2Cameras : public CameraStack {
public:
    /// `systemFolder` is where the kernel describes devices, such as "/sys".
    V4l2Cameras(std::unique_ptr<VideoDeviceCalls> calls, std::filesystem::path systemFolder);

    std::vector<Platform::CaptureDevice> devices() override;
    /// None: the kernel has no favourite.
    std::optional<Platform::CaptureDevice> defaultDevice() override;
    std::unique_ptr<CameraFeed> open(const std::string& uniqueID, FrameSink& sink) override;

private:
    class Feed;

    /// Shared with the feeds.
    std::shared_ptr<VideoDeviceCalls> calls_;
    std::filesystem::path systemFolder_;
};

} // namespace LinuxPlatform
