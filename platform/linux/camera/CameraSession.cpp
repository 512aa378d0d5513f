#include "platform/linux/camera/CameraSession.h"

#include <chrono>
#include <utility>

namespace LinuxPlatform {
namespace {

/// The computer stays awake for so long until a camera has been let go.
constexpr std::chrono::milliseconds sleepPatience{500};

} // namespace

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

CameraSession::CameraSession(Platform::MainQueue& mainQueue, std::unique_ptr<Platform::WorkQueue> workQueue)
    : distributor_(FrameDistributor::make(mainQueue)),
      workQueue_(std::move(workQueue)) {}

CameraSession::~CameraSession() {
    workQueue_.reset();
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
    isRunning_ = true;
    apply();
}

void CameraSession::stopRunning() {
    isRunning_ = false;
    apply();
}

std::optional<Platform::CaptureInterruption> CameraSession::interruption() const {
    return distributor_->interruption();
}

Platform::Subscription CameraSession::observeInterruption(std::function<void()> onChanged) {
    return distributor_->observeInterruption(std::move(onChanged));
}

std::unique_ptr<Platform::VideoPreview> CameraSession::makePreview(std::function<void()> onPictureChanged) {
    return distributor_->makePreview(std::move(onPictureChanged));
}

void CameraSession::setSuspended(bool isSuspended) {
    std::unique_lock lock(wishMutex_);
    isSuspended_ = isSuspended;
    lock.unlock();
    applyElsewhere();
    if (isSuspended) {
        lock.lock();
        applied_.wait_for(lock, sleepPatience, [this] { return !feedInput_; });
    }
}

void CameraSession::commit() {
    if (openConfigurations_ > 0) {
        return;
    }
    {
        const std::scoped_lock lock(wishMutex_);
        committedInput_ = input_;
    }
    applyElsewhere();
}

std::shared_ptr<CameraInput> CameraSession::wantedInput() const {
    return isRunning_ && !isSuspended_ ? committedInput_ : nullptr;
}

void CameraSession::applyElsewhere() {
    {
        const std::scoped_lock lock(wishMutex_);
        if (wantedInput() == feedInput_) {
            return;
        }
    }
    workQueue_->async([this] { apply(); });
}

void CameraSession::apply() {
    const std::scoped_lock feedLock(feedMutex_);
    while (true) {
        std::unique_lock lock(wishMutex_);
        const auto wanted = wantedInput();
        if (wanted == feedInput_) {
            return;
        }
        lock.unlock();
        if (feed_) {
            // Afterwards the wish may be another one.
            closeFeed();
        } else {
            distributor_->open();
            feed_ = wanted->stack().open(wanted->device().uniqueID, *distributor_);
            lock.lock();
            feedInput_ = wanted;
        }
    }
}

void CameraSession::closeFeed() {
    if (!feed_) {
        return;
    }
    feed_ = nullptr;
    distributor_->close();
    {
        const std::scoped_lock lock(wishMutex_);
        feedInput_ = nullptr;
    }
    applied_.notify_all();
}

} // namespace LinuxPlatform
