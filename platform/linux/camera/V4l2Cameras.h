#pragma once

#include "platform/linux/camera/CameraStack.h"
#include "platform/linux/camera/V4l2DeviceList.h"
#include "platform/linux/camera/VideoDeviceCalls.h"

#include <filesystem>
#include <memory>
#include <string_view>

namespace LinuxPlatform {

/// The kernel's video devices, read directly with memory-mapped buffers. A feed has a thread of its own.
class V4l2Cameras : public CameraStack {
public:
    /// How the identifiers of all of these cameras begin.
    static constexpr std::string_view identifierPrefix = "v4l2:";

    /// `systemFolder` is where the kernel describes devices, such as "/sys".
    V4l2Cameras(std::shared_ptr<VideoDeviceCalls> calls, const std::filesystem::path& systemFolder);

    std::vector<Platform::CaptureDevice> devices() override;
    /// None: the kernel has no favourite.
    std::optional<Platform::CaptureDevice> defaultDevice() override;
    std::unique_ptr<CameraFeed> open(const std::string& uniqueID, FrameSink& sink) override;
    void onDevicesChanged(std::function<void()> callback) override;

private:
    class Feed;

    /// Shared with the feeds.
    std::shared_ptr<VideoDeviceCalls> calls_;
    std::shared_ptr<V4l2DeviceList> list_;
};

} // namespace LinuxPlatform
