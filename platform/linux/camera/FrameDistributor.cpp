#include "platform/linux/camera/FrameDistributor.h"

#include <algorithm>
#include <utility>

namespace LinuxPlatform {

class FrameDistributor::Preview : public Platform::VideoPreview {
public:
    Preview(std::shared_ptr<FrameDistributor> distributor, std::function<void()> onPictureChanged)
        : distributor_(std::move(distributor)),
          changes_(distributor_->changes_.add(std::move(onPictureChanged))) {}
    Preview(const Preview&) = delete;
    Preview& operator=(const Preview&) = delete;
    ~Preview() override { distributor_->leave(*this); }

    void setSize(int width, int height) override { distributor_->setSize(*this, {width, height}); }
    std::shared_ptr<const Platform::Picture> picture() const override {
        return isShown() ? distributor_->picture() : nullptr;
    }

    bool isShown() const { return size.width > 0 && size.height > 0; }

    /// Guarded by the distributor's lock where other threads read it.
    Size size;

private:
    std::shared_ptr<FrameDistributor> distributor_;
    Platform::Subscription changes_;
};

std::shared_ptr<FrameDistributor> FrameDistributor::make(Platform::MainQueue& mainQueue) {
    // The constructor is private.
    return std::shared_ptr<FrameDistributor>(new FrameDistributor(mainQueue));
}

FrameDistributor::FrameDistributor(Platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

FrameDistributor::~FrameDistributor() {
    endPhotos();
}

void FrameDistributor::open() {
    decoder_.emplace();
    const std::scoped_lock lock(mutex_);
    hasCamera_ = true;
}

void FrameDistributor::close() {
    endPhotos();
    setPicture(nullptr);
    setInterruption(std::nullopt);
    decoder_.reset();
}

bool FrameDistributor::onFrame(const VideoFrame& frame) {
    const bool isUsable = answerPhotos(frame) && showInPreviews(frame);
    if (isUsable) {
        setInterruption(std::nullopt);
    }
    return isUsable;
}

bool FrameDistributor::showInPreviews(const VideoFrame& frame) {
    const auto wanted = [this] {
        const std::scoped_lock lock(mutex_);
        return wanted_;
    }();
    if (wanted.width <= 0) {
        return true;
    }
    auto picture = decoder_->picture(frame, wanted.width, wanted.height);
    if (!picture) {
        return false;
    }
    setPicture(std::move(picture));
    return true;
}

void FrameDistributor::onDark(Platform::CaptureInterruption why) {
    endPhotos();
    // Whoever sees the darkness can ask why.
    setInterruption(why);
    setPicture(nullptr);
}

std::unique_ptr<Platform::VideoPreview>
FrameDistributor::makePreview(std::function<void()> onPictureChanged) {
    auto preview = std::make_unique<Preview>(shared_from_this(), std::move(onPictureChanged));
    const std::scoped_lock lock(mutex_);
    previews_.push_back(preview.get());
    return preview;
}

Platform::Subscription FrameDistributor::observeInterruption(std::function<void()> onChanged) {
    return interruptionChanges_.add(std::move(onChanged));
}

std::optional<Platform::CaptureInterruption> FrameDistributor::interruption() const {
    const std::scoped_lock lock(mutex_);
    return interruption_;
}

void FrameDistributor::capturePhoto(const std::weak_ptr<Platform::PhotoReceiver>& receiver) {
    {
        const std::scoped_lock lock(mutex_);
        if (hasCamera_) {
            receivers_.push_back(receiver);
            return;
        }
    }
    if (const auto unserved = receiver.lock()) {
        unserved->didFinishProcessingPhoto({});
    }
}

void FrameDistributor::endPhotos() {
    std::vector<std::weak_ptr<Platform::PhotoReceiver>> receivers;
    {
        const std::scoped_lock lock(mutex_);
        hasCamera_ = false;
        receivers.swap(receivers_);
    }
    for (const auto& weak : receivers) {
        if (const auto receiver = weak.lock()) {
            receiver->didFinishProcessingPhoto({});
        }
    }
}

bool FrameDistributor::answerPhotos(const VideoFrame& frame) {
    std::vector<std::weak_ptr<Platform::PhotoReceiver>> receivers;
    {
        const std::scoped_lock lock(mutex_);
        hasCamera_ = true;
        if (receivers_.empty()) {
            return true;
        }
        receivers.swap(receivers_);
    }
    const Platform::CapturedPhoto photo{decoder_->photo(frame)};
    if (!photo.fileDataRepresentation) {
        const std::scoped_lock lock(mutex_);
        receivers_.insert(receivers_.begin(), receivers.begin(), receivers.end());
        return false;
    }
    for (const auto& weak : receivers) {
        if (const auto receiver = weak.lock()) {
            receiver->didFinishProcessingPhoto(photo);
        }
    }
    return true;
}

void FrameDistributor::setPicture(std::shared_ptr<const Platform::Picture> picture) {
    {
        const std::scoped_lock lock(mutex_);
        // A frame may still come in after the last preview has lost its size.
        if (wanted_.width <= 0) {
            picture = nullptr;
        }
        if (picture == picture_) {
            return;
        }
        picture_ = std::move(picture);
        if (std::exchange(isNewsOnItsWay_, true)) {
            return;
        }
    }
    tell(&FrameDistributor::changes_, &FrameDistributor::isNewsOnItsWay_);
}

void FrameDistributor::setInterruption(std::optional<Platform::CaptureInterruption> interruption) {
    {
        const std::scoped_lock lock(mutex_);
        if (std::exchange(interruption_, interruption) == interruption ||
            std::exchange(isInterruptionOnItsWay_, true)) {
            return;
        }
    }
    tell(&FrameDistributor::interruptionChanges_, &FrameDistributor::isInterruptionOnItsWay_);
}

void FrameDistributor::tell(Platform::Subscribers<> FrameDistributor::*subscribers,
                            bool FrameDistributor::*isOnItsWay) {
    mainQueue_.async([weak = weak_from_this(), subscribers, isOnItsWay] {
        if (const auto self = weak.lock()) {
            {
                const std::scoped_lock lock(self->mutex_);
                (*self).*isOnItsWay = false;
            }
            ((*self).*subscribers).tell();
        }
    });
}

void FrameDistributor::updateWanted() {
    wanted_ = {};
    for (const auto* preview : previews_) {
        if (preview->isShown()) {
            wanted_.width = std::max(wanted_.width, preview->size.width);
            wanted_.height = std::max(wanted_.height, preview->size.height);
        }
    }
    if (wanted_.width <= 0) {
        // The next one to look must not see an old picture.
        picture_ = nullptr;
    }
}

void FrameDistributor::setSize(Preview& preview, Size size) {
    const std::scoped_lock lock(mutex_);
    preview.size = size;
    updateWanted();
}

std::shared_ptr<const Platform::Picture> FrameDistributor::picture() const {
    const std::scoped_lock lock(mutex_);
    return picture_;
}

void FrameDistributor::leave(Preview& preview) {
    const std::scoped_lock lock(mutex_);
    std::erase(previews_, &preview);
    updateWanted();
}

} // namespace LinuxPlatform
