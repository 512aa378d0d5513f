#pragma once

#include "platform/CaptureServices.h"
#include "platform/MainQueue.h"
#include "platform/linux/camera/JpegCodec.h"
#include "platform/linux/camera/PipeWireCameras.h"

#include <memory>
#include <vector>

namespace LinuxPlatform {

class CameraSession;

/// The cameras of the PipeWire daemon or, where there is none, those of the kernel.
class LinuxCaptureServices : public Platform::CaptureServices {
public:
    /// `mainQueue` outlives the services and the sessions. `directCameras` may be null.
    LinuxCaptureServices(Platform::MainQueue& mainQueue, std::unique_ptr<PipeWireCameras> pipeWire,
                         std::unique_ptr<CameraStack> directCameras);

    void prepare() override;
    std::vector<Platform::CaptureDevice> devices() override;
    std::optional<Platform::CaptureDevice> defaultDevice() override;
    std::shared_ptr<Platform::CaptureInput> makeInput(const Platform::CaptureDevice& device) override;
    std::shared_ptr<Platform::PhotoOutput> makePhotoOutput() override;
    std::shared_ptr<Platform::CaptureSession> makeSession() override;
    /// JPEG, as photos are.
    std::shared_ptr<const Platform::Picture> decodeImage(const std::vector<std::byte>& encoded) override;

    /// Sessions let their cameras go when the computer falls asleep, and pick them up when it wakes.
    void setSuspended(bool isSuspended);

private:
    /// The one to ask now.
    std::shared_ptr<CameraStack> stack();

    Platform::MainQueue& mainQueue_;
    // Inputs keep theirs alive.
    std::shared_ptr<PipeWireCameras> pipeWire_;
    std::shared_ptr<CameraStack> directCameras_;
    JpegCodec codec_;
    std::vector<std::weak_ptr<CameraSession>> sessions_;
};

} // namespace LinuxPlatform
