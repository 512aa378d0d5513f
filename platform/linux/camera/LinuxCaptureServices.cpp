#include "platform/linux/camera/LinuxCaptureServices.h"

#include "platform/Subscribers.h"
#include "platform/linux/camera/CameraSession.h"
#include "platform/linux/camera/JpegCodec.h"
#include "platform/linux/camera/V4l2Cameras.h"

#include <atomic>
#include <utility>

namespace LinuxPlatform {
namespace {

/// Cameras come with several devices, and a session manager tells of them one by one.
constexpr Platform::MainQueue::Seconds settlingTime(0.2);

} // namespace

/// Tells the main thread of any number of changes at once.
class LinuxCaptureServices::DeviceNews : public std::enable_shared_from_this<DeviceNews> {
public:
    explicit DeviceNews(Platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    Platform::Subscription observe(std::function<void()> onChanged) {
        return observers_.add(std::move(onChanged));
    }

    /// Any thread.
    void signal() {
        if (isOnItsWay_.exchange(true)) {
            return;
        }
        mainQueue_.async([weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->settle();
            }
        });
    }

private:
    void settle() {
        mainQueue_.asyncAfter(settlingTime, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->isOnItsWay_ = false;
                self->observers_.tell();
            }
        });
    }

    Platform::MainQueue& mainQueue_;
    std::atomic<bool> isOnItsWay_ = false;
    Platform::Subscribers<> observers_;
};

LinuxCaptureServices::LinuxCaptureServices(Platform::MainQueue& mainQueue, Platform::WorkQueues& workQueues,
                                           std::unique_ptr<PipeWireCameras> pipeWire,
                                           std::unique_ptr<CameraStack> directCameras)
    : mainQueue_(mainQueue),
      workQueues_(workQueues),
      deviceNews_(std::make_shared<DeviceNews>(mainQueue)),
      pipeWire_(std::move(pipeWire)),
      directCameras_(std::move(directCameras)) {
    const auto signal = [weak = std::weak_ptr(deviceNews_)] {
        if (const auto news = weak.lock()) {
            news->signal();
        }
    };
    pipeWire_->onDevicesChanged(signal);
    if (directCameras_) {
        directCameras_->onDevicesChanged(signal);
    }
}

Platform::Subscription LinuxCaptureServices::observeDevices(std::function<void()> onChanged) {
    return deviceNews_->observe(std::move(onChanged));
}

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
    // Whichever stack is in charge now, the identifier is of one of them.
    const bool isDirect = directCameras_ && device.uniqueID.starts_with(V4l2Cameras::identifierPrefix);
    return std::make_shared<CameraInput>(device, isDirect ? directCameras_ : pipeWire_);
}

std::shared_ptr<Platform::PhotoOutput> LinuxCaptureServices::makePhotoOutput() {
    return std::make_shared<CameraPhotoOutput>();
}

std::shared_ptr<Platform::CaptureSession> LinuxCaptureServices::makeSession() {
    std::erase_if(sessions_, [](const auto& session) { return session.expired(); });
    auto session = std::make_shared<CameraSession>(mainQueue_, workQueues_.makeSerial("camera switch"));
    sessions_.push_back(session);
    return session;
}

std::shared_ptr<const Platform::Picture>
LinuxCaptureServices::decodeImage(const std::vector<std::byte>& encoded) {
    return JpegCodec().decode(encoded, 1).picture;
}

void LinuxCaptureServices::setSuspended(bool isSuspended) {
    for (const auto& weak : sessions_) {
        if (const auto session = weak.lock()) {
            session->setSuspended(isSuspended);
        }
    }
}

std::shared_ptr<CameraStack> LinuxCaptureServices::stack() {
    if (directCameras_ && !pipeWire_->isInCharge()) {
        return directCameras_;
    }
    return pipeWire_;
}

} // namespace LinuxPlatform
