#include "platform/linux/camera/CameraSession.h"

#include <utility>

namespace LinuxPlatform {

CameraInput::CameraInput(Platform::CaptureDevice device, std::shared_ptr<CameraStack> stack)
    : device_(std::move(device)),
      stack_(std::move(stack)) {}

const Platform::CaptureDevice& CameraInput::device() const {
    return device_;
}

CameraStack& CameraInput::stack() const {
    return *stack_;
}

std::vector<Platform::PhotoCodec> CameraPhotoOutput::availablePhotoCodecTypes() const {
    // Frames of cameras without JPEG are encoded here.
    return {Platform::PhotoCodec::jpeg};
}

void CameraPhotoOutput::capturePhoto(const Platform::PhotoSettings&,
                                     std::weak_ptr<Platform::PhotoReceiver> receiver) {
    if (const auto distributor = distributor_.lock()) {
        distributor->capturePhoto(receiver);
    } else if (const auto unserved = receiver.lock()) {
        unserved->didFinishProcessingPhoto({});
    }
}

void CameraPhotoOutput::attach(std::weak_ptr<FrameDistributor> distributor) {
    distributor_ = std::move(distributor);
}

CameraSession::CameraSession(Platform::MainQueue& mainQueue)
    : distributor_(FrameDistributor::make(mainQueue)) {}

CameraSession::~CameraSession() {
    closeFeed();
}

void CameraSession::beginConfiguration() {
    ++openConfigurations_;
}

void CameraSession::commitConfiguration() {
    if (openConfigurations_ > 0 && --openConfigurations_ == 0) {
        commit();
    }
}

std::vector<std::shared_ptr<Platform::CaptureInput>> CameraSession::inputs() const {
    return input_ ? std::vector<std::shared_ptr<Platform::CaptureInput>>{input_}
                  : std::vector<std::shared_ptr<Platform::CaptureInput>>{};
}

void CameraSession::removeInput(const std::shared_ptr<Platform::CaptureInput>& input) {
    if (input && input == input_) {
        input_ = nullptr;
        commit();
    }
}

bool CameraSession::canAddInput(const std::shared_ptr<Platform::CaptureInput>& input) const {
    return !input_ && std::dynamic_pointer_cast<CameraInput>(input);
}

void CameraSession::addInput(const std::shared_ptr<Platform::CaptureInput>& input) {
    if (canAddInput(input)) {
        input_ = std::static_pointer_cast<CameraInput>(input);
        commit();
    }
}

std::vector<std::shared_ptr<Platform::PhotoOutput>> CameraSession::outputs() const {
    return output_ ? std::vector<std::shared_ptr<Platform::PhotoOutput>>{output_}
                   : std::vector<std::shared_ptr<Platform::PhotoOutput>>{};
}

bool CameraSession::canAddOutput(const std::shared_ptr<Platform::PhotoOutput>& output) const {
    return !output_ && std::dynamic_pointer_cast<CameraPhotoOutput>(output);
}

void CameraSession::addOutput(const std::shared_ptr<Platform::PhotoOutput>& output) {
    if (canAddOutput(output)) {
        output_ = std::static_pointer_cast<CameraPhotoOutput>(output);
        output_->attach(distributor_);
    }
}

bool CameraSession::isRunning() const {
    return isRunning_;
}

void CameraSession::startRunning() {
    const std::scoped_lock lock(mutex_);
    isRunning_ = true;
    apply();
}

void CameraSession::stopRunning() {
    const std::scoped_lock lock(mutex_);
    isRunning_ = false;
    apply();
}

std::unique_ptr<Platform::VideoPreview> CameraSession::makePreview(std::function<void()> onPictureChanged) {
    return distributor_->makePreview(std::move(onPictureChanged));
}

void CameraSession::setSuspended(bool isSuspended) {
    const std::scoped_lock lock(mutex_);
    isSuspended_ = isSuspended;
    apply();
}

void CameraSession::commit() {
    if (openConfigurations_ > 0) {
        return;
    }
    const std::scoped_lock lock(mutex_);
    committedInput_ = input_;
    apply();
}

void CameraSession::apply() {
    const auto wanted = isRunning_ && !isSuspended_ ? committedInput_ : nullptr;
    if (wanted == feedInput_) {
        return;
    }
    closeFeed();
    if (wanted) {
        distributor_->open();
        feed_ = wanted->stack().open(wanted->device().uniqueID, *distributor_);
        feedInput_ = wanted;
    }
}

void CameraSession::closeFeed() {
    if (feedInput_) {
        feed_ = nullptr;
        feedInput_ = nullptr;
        distributor_->close();
    }
}

} // namespace LinuxPlatform
