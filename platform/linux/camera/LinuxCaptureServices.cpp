#include "platform/linux/camera/LinuxCaptureServices.h"

#include "platform/linux/camera/CameraSession.h"

#include <algorithm>
#include <utility>

namespace LinuxPlatform {

LinuxCaptureServices::LinuxCaptureServices(Platform::MainQueue& mainQueue,
                                           std::unique_ptr<PipeWireCameras> pipeWire,
                                           std::unique_ptr<CameraStack> directCameras)
    : mainQueue_(mainQueue),
      pipeWire_(std::move(pipeWire)),
      directCameras_(std::move(directCameras)) {}

void LinuxCaptureServices::prepare() {
    pipeWire_->prepare();
}

std::vector<Platform::CaptureDevice> LinuxCaptureServices::devices() {
    return stack()->devices();
}

std::optional<Platform::CaptureDevice> LinuxCaptureServices::defaultDevice() {
    return stack()->defaultDevice();
}

std::shared_ptr<Platform::CaptureInput>
LinuxCaptureServices::makeInput(const Platform::CaptureDevice& device) {
    const auto devices = stack()->devices();
    if (std::ranges::find(devices, device) == devices.end()) {
        return nullptr;
    }
    return std::make_shared<CameraInput>(device, stack());
}

std::shared_ptr<Platform::PhotoOutput> LinuxCaptureServices::makePhotoOutput() {
    return std::make_shared<CameraPhotoOutput>();
}

std::shared_ptr<Platform::CaptureSession> LinuxCaptureServices::makeSession() {
    std::erase_if(sessions_, [](const auto& session) { return session.expired(); });
    auto session = std::make_shared<CameraSession>(mainQueue_);
    sessions_.push_back(session);
    return session;
}

std::shared_ptr<const Platform::Picture>
LinuxCaptureServices::decodeImage(const std::vector<std::byte>& encoded) {
    return codec_.decode(encoded, 1).picture;
}

void LinuxCaptureServices::setSuspended(bool isSuspended) {
    for (const auto& weak : sessions_) {
        if (const auto session = weak.lock()) {
            session->setSuspended(isSuspended);
        }
    }
}

std::shared_ptr<CameraStack> LinuxCaptureServices::stack() {
    if (directCameras_ && !pipeWire_->isReachable()) {
        return directCameras_;
    }
    return pipeWire_;
}

} // namespace LinuxPlatform
