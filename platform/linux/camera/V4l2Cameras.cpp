#include "platform/linux/camera/V4l2Cameras.h"

#include "platform/linux/camera/CameraOrder.h"
#include "platform/linux/camera/V4l2Device.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <thread>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

/// How often a camera that is not there, or does not work, is tried again.
constexpr std::chrono::milliseconds retryInterval{500};
/// A camera that delivers nothing for so long is opened anew.
constexpr std::chrono::seconds longestSilence{5};

struct FoundDevice {
    Platform::CaptureDevice device;
    std::string path;
};

std::vector<FoundDevice> look(VideoDeviceCalls& calls, const std::filesystem::path& systemFolder) {
    const auto paths = calls.devices();
    std::vector<FoundCamera> cameras;
    for (std::size_t index = 0; index < paths.size(); ++index) {
        if (const auto description = V4l2Device(calls, paths[index]).describe()) {
            cameras.push_back({"v4l2:" + description->bus, description->name, "v4l2:" + paths[index], index});
        }
    }
    std::vector<FoundDevice> found;
    for (auto& camera : inDiscoveryOrder(std::move(cameras), systemFolder)) {
        found.push_back({std::move(camera.device), paths[static_cast<std::size_t>(camera.serial)]});
    }
    return found;
}

/// Wakes a thread that waits.
class WakeUp {
public:
    WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;
    ~WakeUp() { close(descriptor_); }

    int descriptor() const { return descriptor_; }
    void signal() const {
        const std::uint64_t one = 1;
        // The counter cannot be full.
        [[maybe_unused]] const auto written = write(descriptor_, &one, sizeof one);
    }

private:
    int descriptor_;
};

} // namespace

class V4l2Cameras::Feed : public CameraFeed {
public:
    Feed(std::shared_ptr<VideoDeviceCalls> calls, std::filesystem::path systemFolder, std::string uniqueID,
         FrameSink& sink)
        : calls_(std::move(calls)),
          systemFolder_(std::move(systemFolder)),
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
        while (!stop.stop_requested()) {
            const auto found = look(*calls_, systemFolder_);
            const auto camera =
                std::ranges::find(found, uniqueID_, [](const auto& entry) { return entry.device.uniqueID; });
            if (camera != found.end()) {
                deliver(camera->path, stop);
            }
            sink_.onDark();
            if (!stop.stop_requested()) {
                calls_->wait(-1, wakeUp_.descriptor(), retryInterval);
            }
        }
    }

    /// Until the camera fails.
    void deliver(const std::string& path, const std::stop_token& stop) {
        V4l2Device device(*calls_, path);
        if (!device.start()) {
            return;
        }
        auto lastFrame = std::chrono::steady_clock::now();
        while (!stop.stop_requested()) {
            const auto turn = device.next(wakeUp_.descriptor(), retryInterval,
                                          [this](const VideoFrame& frame) { sink_.onFrame(frame); });
            const auto now = std::chrono::steady_clock::now();
            if (turn == V4l2Device::Turn::frame) {
                lastFrame = now;
            }
            if (turn == V4l2Device::Turn::failed || now - lastFrame > longestSilence) {
                return;
            }
        }
    }

    std::shared_ptr<VideoDeviceCalls> calls_;
    std::filesystem::path systemFolder_;
    std::string uniqueID_;
    FrameSink& sink_;
    WakeUp wakeUp_;
    /// Last, so that it sees everything else made.
    std::jthread thread_;
};

V4l2Cameras::V4l2Cameras(std::unique_ptr<VideoDeviceCalls> calls, std::filesystem::path systemFolder)
    : calls_(std::move(calls)),
      systemFolder_(std::move(systemFolder)) {}

std::vector<Platform::CaptureDevice> V4l2Cameras::devices() {
    std::vector<Platform::CaptureDevice> devices;
    for (auto& found : look(*calls_, systemFolder_)) {
        devices.push_back(std::move(found.device));
    }
    return devices;
}

std::optional<Platform::CaptureDevice> V4l2Cameras::defaultDevice() {
    return std::nullopt;
}

std::unique_ptr<CameraFeed> V4l2Cameras::open(const std::string& uniqueID, FrameSink& sink) {
    return std::make_unique<Feed>(calls_, systemFolder_, uniqueID, sink);
}

} // namespace LinuxPlatform
