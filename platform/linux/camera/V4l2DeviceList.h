#pragma once

#include "platform/CaptureServices.h"
#include "platform/linux/camera/VideoDeviceCalls.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// The kernel's cameras. A thread looks at the devices whenever they come, go or change hands, since a driver
/// may take its time; it exists from the first question on. Any thread.
class V4l2DeviceList {
public:
    struct Camera {
        Platform::CaptureDevice device;
        std::string path;

        bool operator==(const Camera&) const = default;
    };

    /// `systemFolder` is where the kernel describes devices, such as "/sys".
    V4l2DeviceList(std::shared_ptr<VideoDeviceCalls> calls, std::filesystem::path systemFolder);
    V4l2DeviceList(const V4l2DeviceList&) = delete;
    V4l2DeviceList& operator=(const V4l2DeviceList&) = delete;
    /// Leaves behind a driver that does not answer.
    ~V4l2DeviceList();

    /// In the order of discovery, as they were when they were looked at last. The first call may wait half a
    /// second for it.
    std::vector<Camera> cameras();
    std::optional<std::string> pathOf(const std::string& uniqueID);
    /// `callback` is called on the list's thread when there is another list than before, in place of an
    /// earlier one; null for none. It asks nothing of this object, and is not called any more after its
    /// destruction.
    void onChanged(std::function<void()> callback);
    /// Something seems to have changed.
    void lookAgain();

private:
    struct Shared;

    void begin();

    std::shared_ptr<Shared> shared_;
};

} // namespace LinuxPlatform
