#include "platform/linux/camera/V4l2DeviceList.h"

#include "platform/linux/camera/CameraOrder.h"
#include "platform/linux/camera/V4l2Device.h"
#include "platform/linux/camera/WakeUp.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::chrono::milliseconds firstLookPatience{500};
constexpr std::chrono::milliseconds endPatience{500};
/// A camera comes with several devices, and is given to its users a moment later.
constexpr std::chrono::milliseconds settlingTime{50};
constexpr std::chrono::hours untilSomethingHappens{1};

/// The number in "/dev/videoN", which no other device has meanwhile.
std::uint64_t numberOf(const std::string& path) {
    const auto digits = path.find_last_not_of("0123456789") + 1;
    std::uint64_t number = 0;
    std::from_chars(path.data() + digits, path.data() + path.size(), number);
    return number;
}

} // namespace

/// What the thread works with; it may be left behind alone.
struct V4l2DeviceList::Shared {
    std::shared_ptr<VideoDeviceCalls> calls;
    CameraDirectory directory;
    WakeUp wakeUp;

    std::mutex mutex;
    std::condition_variable changed;
    std::function<void()> onChanged;
    std::vector<Camera> cameras;
    bool hasBegun = false;
    bool hasLooked = false;
    bool hasBeenWaitedFor = false;
    bool isToEnd = false;
    bool hasEnded = false;

    Shared(std::shared_ptr<VideoDeviceCalls> theCalls, std::filesystem::path systemFolder)
        : calls(std::move(theCalls)),
          directory(std::move(systemFolder)) {}

    void run() {
        const int watch = calls->watch();
        while (!isOver()) {
            look();
            calls->wait(watch, wakeUp.descriptor(), untilSomethingHappens);
            wakeUp.clear();
            if (!isOver()) {
                calls->wait(-1, wakeUp.descriptor(), settlingTime);
            }
            if (watch >= 0) {
                calls->takeNews(watch);
            }
        }
        if (watch >= 0) {
            calls->close(watch);
        }
        const std::scoped_lock lock(mutex);
        hasEnded = true;
        changed.notify_all();
    }

    bool isOver() {
        const std::scoped_lock lock(mutex);
        return isToEnd;
    }

    void look() {
        auto found = find();
        std::unique_lock lock(mutex);
        const bool isNews = found != cameras || !hasLooked;
        cameras = std::move(found);
        hasLooked = true;
        changed.notify_all();
        if (isNews && !isToEnd && onChanged) {
            onChanged();
        }
    }

    std::vector<Camera> find() {
        std::vector<FoundCamera> found;
        std::map<std::uint64_t, std::string> paths;
        for (auto& path : calls->devices()) {
            if (const auto description = V4l2Device(*calls, path).describe()) {
                const auto number = numberOf(path);
                found.push_back({.stableName = "v4l2:" + description->bus,
                                 .description = description->name,
                                 .objectPath = "v4l2:" + path,
                                 .serial = number,
                                 .isGray = description->isGray});
                paths[number] = std::move(path);
            }
        }
        std::vector<Camera> listed;
        for (auto& camera : directory.list(std::move(found))) {
            listed.push_back({std::move(camera.device), paths[camera.serial]});
        }
        return listed;
    }
};

V4l2DeviceList::V4l2DeviceList(std::shared_ptr<VideoDeviceCalls> calls, std::filesystem::path systemFolder)
    : shared_(std::make_shared<Shared>(std::move(calls), std::move(systemFolder))) {}

V4l2DeviceList::~V4l2DeviceList() {
    std::unique_lock lock(shared_->mutex);
    shared_->isToEnd = true;
    shared_->wakeUp.signal();
    shared_->changed.wait_for(lock, endPatience, [&] { return !shared_->hasBegun || shared_->hasEnded; });
}

std::vector<V4l2DeviceList::Camera> V4l2DeviceList::cameras() {
    begin();
    std::unique_lock lock(shared_->mutex);
    if (!shared_->hasLooked && !std::exchange(shared_->hasBeenWaitedFor, true)) {
        shared_->changed.wait_for(lock, firstLookPatience, [&] { return shared_->hasLooked; });
    }
    return shared_->cameras;
}

std::optional<std::string> V4l2DeviceList::pathOf(const std::string& uniqueID) {
    begin();
    const std::scoped_lock lock(shared_->mutex);
    const auto& cameras = shared_->cameras;
    const auto found =
        std::ranges::find(cameras, uniqueID, [](const auto& camera) { return camera.device.uniqueID; });
    return found == cameras.end() ? std::nullopt : std::optional(found->path);
}

void V4l2DeviceList::onChanged(std::function<void()> callback) {
    const std::scoped_lock lock(shared_->mutex);
    shared_->onChanged = std::move(callback);
}

void V4l2DeviceList::lookAgain() {
    begin();
    shared_->wakeUp.signal();
}

void V4l2DeviceList::begin() {
    const std::scoped_lock lock(shared_->mutex);
    if (!std::exchange(shared_->hasBegun, true)) {
        std::thread([shared = shared_] { shared->run(); }).detach();
    }
}

} // namespace LinuxPlatform
