#include "platform/linux/camera/pipewire/PipeWireCameras.h"

#include "platform/linux/camera/pipewire/PipeWireConnection.h"
#include "platform/linux/camera/pipewire/PipeWireFeed.h"

#include <utility>

namespace LinuxPlatform {

PipeWireCameras::PipeWireCameras(Connector connector)
    : connection_(std::make_unique<PipeWireConnection>(std::move(connector))) {}

PipeWireCameras::~PipeWireCameras() = default;

void PipeWireCameras::prepare() {
    connection_->reach();
}

std::vector<Platform::CaptureDevice> PipeWireCameras::devices() {
    std::vector<Platform::CaptureDevice> devices;
    for (auto& camera : connection_->snapshot().cameras) {
        devices.push_back(std::move(camera.device));
    }
    return devices;
}

std::optional<Platform::CaptureDevice> PipeWireCameras::defaultDevice() {
    return connection_->snapshot().defaultCamera;
}

std::unique_ptr<CameraFeed> PipeWireCameras::open(const std::string& uniqueID, FrameSink& sink) {
    return std::make_unique<PipeWireFeed>(*connection_, uniqueID, sink);
}

void PipeWireCameras::onDevicesChanged(std::function<void()> callback) {
    connection_->onChanged(std::move(callback));
}

bool PipeWireCameras::isReachable() {
    return connection_->snapshot().isComplete;
}

bool PipeWireCameras::isInCharge() {
    const auto snapshot = connection_->snapshot();
    return snapshot.isComplete && (snapshot.hasSessionManager || !snapshot.cameras.empty());
}

} // namespace LinuxPlatform
