#include "platform/linux/camera/V4l2Cameras.h"

#include "platform/linux/camera/PictureWatch.h"
#include "platform/linux/camera/V4l2Device.h"
#include "platform/linux/camera/WakeUp.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace LinuxPlatform {
namespace {

using Platform::CaptureInterruption;

/// How often a camera that is not there, or does not work, is tried again.
constexpr std::chrono::milliseconds retryInterval{500};

} // namespace

class V4l2Cameras::Feed : public CameraFeed {
public:
    Feed(std::shared_ptr<VideoDeviceCalls> calls, std::shared_ptr<V4l2DeviceList> list, std::string uniqueID,
         FrameSink& sink)
        : calls_(std::move(calls)),
          list_(std::move(list)),
          uniqueID_(std::move(uniqueID)),
          sink_(sink),
          thread_([this](const std::stop_token& stop) { run(stop); }) {}
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;
    ~Feed() override {
        thread_.request_stop();
        wakeUp_.signal();
        thread_.join();
    }

private:
    void run(const std::stop_token& stop) {
        // It may not have been looked for yet.
        list_->cameras();
        while (!stop.stop_requested()) {
            const auto path = list_->pathOf(uniqueID_);
            const auto why = path ? deliver(*path, stop) : CaptureInterruption::deviceNotAvailable;
            if (stop.stop_requested()) {
                return;
            }
            sink_.onDark(why);
            list_->lookAgain();
            const bool isSilence = why == CaptureInterruption::noPictures;
            calls_->wait(-1, wakeUp_.descriptor(), isSilence ? watch_.pause() : retryInterval);
        }
    }

    /// Until the camera fails or falls silent.
    CaptureInterruption deliver(const std::string& path, const std::stop_token& stop) {
        V4l2Device device(*calls_, path);
        switch (device.start()) {
        case V4l2Device::Start::begun:
            break;
        case V4l2Device::Start::busy:
            return CaptureInterruption::deviceInUse;
        case V4l2Device::Start::failed:
            return reasonOfFailure(path);
        }
        watch_.onOpened(PictureWatch::Clock::now());
        while (!stop.stop_requested()) {
            const auto left = watch_.left(PictureWatch::Clock::now());
            if (left.count() <= 0) {
                return CaptureInterruption::noPictures;
            }
            const auto turn = device.next(wakeUp_.descriptor(), left, [this](const VideoFrame& frame) {
                if (sink_.onFrame(frame)) {
                    watch_.onPicture(PictureWatch::Clock::now());
                }
            });
            if (turn == V4l2Device::Turn::failed) {
                return reasonOfFailure(path);
            }
        }
        return CaptureInterruption::noPictures;
    }

    CaptureInterruption reasonOfFailure(const std::string& path) {
        const auto paths = calls_->devices();
        return std::ranges::find(paths, path) == paths.end() ? CaptureInterruption::deviceNotAvailable
                                                             : CaptureInterruption::deviceFailed;
    }

    std::shared_ptr<VideoDeviceCalls> calls_;
    std::shared_ptr<V4l2DeviceList> list_;
    std::string uniqueID_;
    FrameSink& sink_;
    PictureWatch watch_;
    WakeUp wakeUp_;
    /// Last, so that it sees everything else made.
    std::jthread thread_;
};

V4l2Cameras::V4l2Cameras(std::shared_ptr<VideoDeviceCalls> calls, const std::filesystem::path& systemFolder)
    : calls_(std::move(calls)),
      list_(std::make_shared<V4l2DeviceList>(calls_, systemFolder)) {}

std::vector<Platform::CaptureDevice> V4l2Cameras::devices() {
    std::vector<Platform::CaptureDevice> devices;
    for (auto& camera : list_->cameras()) {
        devices.push_back(std::move(camera.device));
    }
    return devices;
}

std::optional<Platform::CaptureDevice> V4l2Cameras::defaultDevice() {
    return std::nullopt;
}

std::unique_ptr<CameraFeed> V4l2Cameras::open(const std::string& uniqueID, FrameSink& sink) {
    return std::make_unique<Feed>(calls_, list_, uniqueID, sink);
}

void V4l2Cameras::onDevicesChanged(std::function<void()> callback) {
    list_->onChanged(std::move(callback));
}

} // namespace LinuxPlatform
