#include "platform/linux/audio/PulseAudioServices.h"

#include "platform/linux/audio/CafRecording.h"
#include "platform/linux/audio/PulseAudioEngine.h"
#include "platform/linux/audio/PulseAudioPlayer.h"
#include "platform/linux/audio/SoundServer.h"

#include <chrono>
#include <future>
#include <utility>

namespace LinuxPlatform {
namespace {

/// The main thread waits no longer than this for a list of devices.
constexpr std::chrono::milliseconds moment{300};

} // namespace

PulseAudioServices::PulseAudioServices(Platform::MainQueue& mainQueue, std::chrono::milliseconds patience)
    : mainQueue_(mainQueue),
      patience_(patience) {}

PulseAudioServices::~PulseAudioServices() = default;

Platform::Subscription PulseAudioServices::prepare() {
    // It connects and lists the devices of its own accord.
    return Platform::Subscription([connection = server()]() mutable { connection.reset(); });
}

bool PulseAudioServices::hasInputDevice() {
    const auto connection = server();
    const auto promise = std::make_shared<std::promise<bool>>();
    auto answer = promise->get_future();
    connection->loop().post([&sound = *connection, promise] {
        sound.whenKnown([&sound, promise] { promise->set_value(sound.hasMicrophone()); });
    });
    return answer.wait_for(moment) == std::future_status::ready && answer.get();
}

Platform::Subscription PulseAudioServices::observeInputDevice(std::function<void(bool isThere)> observer) {
    auto connection = server();
    auto alive = std::make_shared<const std::function<void(bool)>>(std::move(observer));
    const auto tell = [&sound = *connection, &mainQueue = mainQueue_, weak = std::weak_ptr(alive)] {
        mainQueue.async([weak, isThere = sound.defaultInput().has_value()] {
            if (const auto stillThere = weak.lock()) {
                (*stillThere)(isThere);
            }
        });
    };
    // The loop's thread only.
    auto changes = std::make_shared<Platform::Subscription>();
    connection->loop().post([&sound = *connection, changes, tell] {
        *changes = sound.addInputObserver(tell);
        sound.whenKnown(tell);
    });
    return Platform::Subscription(
        [connection = std::move(connection), changes, alive = std::move(alive)]() mutable {
            alive.reset();
            connection->loop().post([changes] { *changes = {}; });
            connection.reset();
        });
}

std::shared_ptr<Platform::AudioEngine> PulseAudioServices::makeEngine() {
    return std::make_shared<PulseAudioEngine>(server());
}

std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
PulseAudioServices::openFileForWriting(const std::string& path, const Platform::AudioFormat& settings) {
    return CafRecording::create(path, settings);
}

std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
PulseAudioServices::makePlayer(const std::string& path) {
    return PulseAudioPlayer::open(path, mainQueue_, [this] { return server(); });
}

void PulseAudioServices::setSuspended(bool isSuspended) {
    const auto connection = shared_.lock();
    if (!connection) {
        return;
    }
    const auto promise = std::make_shared<std::promise<void>>();
    connection->loop().post([&sound = *connection, isSuspended, promise] {
        sound.setSuspended(isSuspended);
        promise->set_value();
    });
    promise->get_future().wait_for(moment);
}

std::shared_ptr<SoundServer> PulseAudioServices::server() {
    auto existing = shared_.lock();
    if (!existing) {
        existing = std::make_shared<SoundServer>(patience_);
        shared_ = existing;
    }
    return existing;
}

} // namespace LinuxPlatform
