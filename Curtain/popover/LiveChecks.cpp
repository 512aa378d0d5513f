#include "Curtain/popover/LiveChecks.h"

#include <utility>

namespace Curtain {

void LiveChecks::start() {
    if (services_.lock.isLocked()) {
        return;
    }
    const auto preferences = services_.store.load();
    if (preferences.showCameraPreview) {
        services_.camera.start(preferences.selectedCameraID);
    } else {
        services_.camera.stop();
    }
    if (preferences.showMicrophoneCheck) {
        services_.mic.start();
    } else {
        services_.mic.stop();
    }
}

void LiveChecks::startCamera(const std::string& cameraID) {
    if (!services_.lock.isLocked()) {
        services_.camera.start(cameraID);
    }
}

void LiveChecks::rest() {
    isResting_ = true;
    stop();
}

void LiveChecks::endRest() {
    if (std::exchange(isResting_, false)) {
        start();
    }
}

void LiveChecks::end() {
    isResting_ = false;
    stop();
    services_.camera.clearCapturedPhoto();
}

void LiveChecks::stop() {
    services_.camera.stop();
    services_.mic.stop();
}

ProviderReadiness LiveChecks::cameraReadiness() const {
    if (!services_.store.load().showCameraPreview) {
        return {};
    }
    const auto status = services_.camera.status();
    // A camera that shows nothing is not ready, whatever it was when it was started.
    return {status != CameraStatus::unavailable,
            status == CameraStatus::available && !services_.camera.interruption()};
}

ProviderReadiness LiveChecks::microphoneReadiness() const {
    if (!services_.store.load().showMicrophoneCheck) {
        return {};
    }
    const auto status = services_.authorization.status(Platform::MediaType::audio);
    return {true, status == Platform::AuthorizationStatus::authorized};
}

} // namespace Curtain
