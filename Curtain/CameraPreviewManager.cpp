#include "Curtain/CameraPreviewManager.h"

#include "Curtain/PhotoCaptureDelegate.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace Curtain {

/// A photo that decodes.
struct CameraPreviewManager::Photo {
    std::vector<std::byte> data;
    std::shared_ptr<const Platform::Picture> picture;
};

struct CameraPreviewManager::Running {
    explicit Running(std::shared_ptr<Platform::CaptureSession> theSession) : session(std::move(theSession)) {}

    std::shared_ptr<Platform::CaptureSession> session;
    std::atomic<bool> isWanted{false};

    /// Tasks of the queue run side by side, in any order. Whoever comes last leaves the session as it is
    /// wanted then, so a stop that overtakes its start does not leave the camera on.
    void settle() {
        bool wanted = false;
        do {
            wanted = isWanted;
            if (wanted != session->isRunning()) {
                if (wanted) {
                    session->startRunning();
                } else {
                    session->stopRunning();
                }
            }
        } while (wanted != isWanted);
    }
};

CameraPreviewManager::CameraPreviewManager(const Services& services)
    : services_(services),
      session_(services.capture.makeSession()),
      photoOutput_(services.capture.makePhotoOutput()),
      running_(std::make_shared<Running>(session_)),
      interruptions_(session_->observeInterruption([this] {
          Q_EMIT changed();
          Q_EMIT findingChanged();
      })),
      devices_(services.capture.observeDevices([this] { devicesChanged(); })) {}

CameraPreviewManager::~CameraPreviewManager() {
    // A view may hold the session for longer.
    runOrStop(false);
}

CameraStatus CameraPreviewManager::status() const {
    return status_;
}

bool CameraPreviewManager::isForbidden() const {
    return isForbidden_;
}

std::optional<Platform::CaptureInterruption> CameraPreviewManager::interruption() const {
    return status_ == CameraStatus::available && isStarted_ ? session_->interruption() : std::nullopt;
}

bool CameraPreviewManager::mirrored() const {
    return mirrored_;
}

void CameraPreviewManager::setMirrored(bool mirrored) {
    if (std::exchange(mirrored_, mirrored) != mirrored) {
        Q_EMIT changed();
    }
}

std::shared_ptr<const Platform::Picture> CameraPreviewManager::capturedPhoto() const {
    return capturedPhoto_;
}

const std::optional<std::vector<std::byte>>& CameraPreviewManager::capturedData() const {
    return capturedData_;
}

void CameraPreviewManager::clearCapturedPhoto() {
    ++photosCleared_;
    capturedData_.reset();
    if (std::exchange(capturedPhoto_, nullptr)) {
        Q_EMIT changed();
    }
}

const std::optional<std::string>& CameraPreviewManager::activeDeviceID() const {
    return activeDeviceID_;
}

const std::shared_ptr<Platform::CaptureSession>& CameraPreviewManager::session() const {
    return session_;
}

void CameraPreviewManager::start(const std::optional<std::string>& deviceID) {
    isStarted_ = true;
    wantedDeviceID_ = deviceID;
    switch (services_.authorization.status(Platform::MediaType::video)) {
    case Platform::AuthorizationStatus::authorized:
        configureAndRun(deviceID);
        return;
    case Platform::AuthorizationStatus::restricted:
        setStatus(CameraStatus::noPermission, true);
        return;
    case Platform::AuthorizationStatus::denied:
        setStatus(CameraStatus::noPermission);
        return;
    case Platform::AuthorizationStatus::notDetermined:
        break;
    default:
        setStatus(CameraStatus::unavailable);
        return;
    }
    auto answer = lifetime_.weak([this, deviceID](bool isGranted) {
        if (isGranted) {
            configureAndRun(deviceID);
        } else {
            setStatus(CameraStatus::noPermission);
        }
    });
    services_.authorization.requestAccess(Platform::MediaType::video,
                                          [&mainQueue = services_.mainQueue, answer](bool isGranted) {
                                              mainQueue.async([answer, isGranted] { answer(isGranted); });
                                          });
}

void CameraPreviewManager::stop() {
    isStarted_ = false;
    runOrStop(false);
}

void CameraPreviewManager::capture() {
    capturePhoto([this, cleared = photosCleared_](std::optional<Photo> photo) {
        if (cleared != photosCleared_) {
            return;
        }
        if (!photo) {
            Q_EMIT photoFailed();
            return;
        }
        capturedData_ = std::move(photo->data);
        capturedPhoto_ = std::move(photo->picture);
        Q_EMIT changed();
    });
}

std::optional<Platform::CaptureDevice> CameraPreviewManager::device(Platform::CaptureServices& capture,
                                                                    const std::optional<std::string>& id) {
    const auto devices = capture.devices();
    if (id) {
        const auto found = std::ranges::find(devices, *id, &Platform::CaptureDevice::uniqueID);
        if (found != devices.end()) {
            return *found;
        }
    }
    if (auto fallback = capture.defaultDevice()) {
        return fallback;
    }
    return devices.empty() ? std::nullopt : std::optional(devices.front());
}

std::vector<CameraChoice> CameraPreviewManager::availableCameras(Platform::CaptureServices& capture) {
    std::vector<CameraChoice> cameras;
    for (const auto& device : capture.devices()) {
        cameras.push_back({device.uniqueID, device.localizedName});
    }
    return cameras;
}

void CameraPreviewManager::requestPermission(const Services& services, std::function<void()> completion) {
    services.authorization.requestAccess(
        Platform::MediaType::video, [&mainQueue = services.mainQueue, completion = std::move(completion)](
                                        bool) { mainQueue.async(completion); });
}

void CameraPreviewManager::configureAndRun(const std::optional<std::string>& deviceID) {
    const auto chosen = device(services_.capture, deviceID);
    if (!chosen) {
        setStatus(CameraStatus::noCameraFound);
        return;
    }
    // An input that could not be made is made again.
    if (chosen->uniqueID != configuredDeviceID_ || session_->inputs().empty()) {
        configure(*chosen);
    }
    // The user may have closed the view while being asked for permission.
    if (isStarted_) {
        runOrStop(true);
    }
    setStatus(CameraStatus::available);
}

void CameraPreviewManager::configure(const Platform::CaptureDevice& device) {
    session_->beginConfiguration();
    for (const auto& input : session_->inputs()) {
        session_->removeInput(input);
    }
    const auto input = services_.capture.makeInput(device);
    if (input && session_->canAddInput(input)) {
        session_->addInput(input);
    }
    const auto outputs = session_->outputs();
    if (!std::ranges::count(outputs, photoOutput_) && session_->canAddOutput(photoOutput_)) {
        session_->addOutput(photoOutput_);
    }
    session_->commitConfiguration();
    configuredDeviceID_ = device.uniqueID;
    activeDeviceID_ = device.uniqueID;
    Q_EMIT changed();
}

void CameraPreviewManager::devicesChanged() {
    if (!isStarted_ || (status_ != CameraStatus::available && status_ != CameraStatus::noCameraFound)) {
        return;
    }
    const auto devices = services_.capture.devices();
    const bool isWantedThere = wantedDeviceID_ && std::ranges::count(devices, *wantedDeviceID_,
                                                                     &Platform::CaptureDevice::uniqueID) > 0;
    // The session waits for a camera that has gone and says so, and no other one is shown in its place while
    // somebody looks.
    if (status_ == CameraStatus::noCameraFound || isWantedThere || devices.empty()) {
        const auto before = status_;
        configureAndRun(wantedDeviceID_);
        if (status_ != before) {
            Q_EMIT findingChanged();
        }
    }
}

void CameraPreviewManager::runOrStop(bool shouldRun) {
    running_->isWanted = shouldRun;
    services_.workQueues.userInitiated().async([running = running_] { running->settle(); });
}

void CameraPreviewManager::capturePhoto(std::function<void(std::optional<Photo>)> completion) {
    const auto outputs = session_->outputs();
    // A session that has been told to stop may still be running for a moment.
    if (!isStarted_ || !session_->isRunning() || !std::ranges::count(outputs, photoOutput_)) {
        completion(std::nullopt);
        return;
    }
    const auto codecs = photoOutput_->availablePhotoCodecTypes();
    Platform::PhotoSettings settings;
    if (std::ranges::count(codecs, Platform::PhotoCodec::jpeg)) {
        settings.codec = Platform::PhotoCodec::jpeg;
    }
    auto onMain = lifetime_.weak(std::move(completion));
    const auto delegate = PhotoCaptureDelegate::make([services = services_, onMain = std::move(onMain)](
                                                         PhotoCaptureDelegate::PhotoData data) {
        // A large photo takes its time, which the main thread does not have.
        std::optional<Photo> photo;
        if (auto picture = data ? services.capture.decodeImage(*data) : nullptr) {
            photo.emplace(Photo{std::move(*data), std::move(picture)});
        }
        services.mainQueue.async([onMain, photo = std::move(photo)]() mutable { onMain(std::move(photo)); });
    });
    photoOutput_->capturePhoto(settings, delegate);
}

void CameraPreviewManager::setStatus(CameraStatus status, bool isForbidden) {
    const bool isOther = status != status_ || isForbidden != isForbidden_;
    status_ = status;
    isForbidden_ = isForbidden;
    if (isOther) {
        Q_EMIT changed();
    }
}

} // namespace Curtain
