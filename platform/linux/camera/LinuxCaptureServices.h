#pragma once

#include "platform/CaptureServices.h"
#include "platform/MainQueue.h"
#include "platform/WorkQueue.h"
#include "platform/linux/camera/pipewire/PipeWireCameras.h"

#include <memory>
#include <vector>

namespace LinuxPlatform {

class CameraSession;

/// The cameras of the PipeWire daemon or, where there is none, or nobody who tells it of cameras, those of
/// the kernel.
class LinuxCaptureServices : public Platform::CaptureServices {
public:
    /// The queues outlive the services, and the main one the sessions. `directCameras` may be null.
    LinuxCaptureServices(Platform::MainQueue& mainQueue, Platform::WorkQueues& workQueues,
                         std::unique_ptr<PipeWireCameras> pipeWire,
                         std::unique_ptr<CameraStack> directCameras);

    void prepare() override;
    std::vector<Platform::CaptureDevice> devices() override;
    std::optional<Platform::CaptureDevice> defaultDevice() override;
    Platform::Subscription observeDevices(std::function<void()> onChanged) override;
    /// Never null: a session waits for a camera that is not there.
    std::shared_ptr<Platform::CaptureInput> makeInput(const Platform::CaptureDevice& device) override;
    std::shared_ptr<Platform::PhotoOutput> makePhotoOutput() override;
    std::shared_ptr<Platform::CaptureSession> makeSession() override;
    /// JPEG, as photos are.
    std::shared_ptr<const Platform::Picture> decodeImage(const std::vector<std::byte>& encoded) override;

    /// Sessions let their cameras go when the computer falls asleep, and pick them up when it wakes.
    void setSuspended(bool isSuspended);

private:
    class DeviceNews;

    /// The one to ask now.
    std::shared_ptr<CameraStack> stack();

    Platform::MainQueue& mainQueue_;
    Platform::WorkQueues& workQueues_;
    std::shared_ptr<DeviceNews> deviceNews_;
    // Inputs keep theirs alive.
    std::shared_ptr<PipeWireCameras> pipeWire_;
    std::shared_ptr<CameraStack> directCameras_;
    std::vector<std::weak_ptr<CameraSession>> sessions_;
};

} // namespace LinuxPlatform
