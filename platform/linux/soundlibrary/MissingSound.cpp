#include "platform/linux/soundlibrary/MissingSound.h"

#include "platform/MainQueue.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace LinuxPlatform {
namespace {

class DeafEngine : public Platform::AudioEngine, public Platform::AudioInputNode {
public:
    explicit DeafEngine(std::string reason) : reason_(std::move(reason)) {}

    Platform::AudioInputNode& inputNode() override { return *this; }
    bool isRunning() const override { return false; }
    std::optional<Platform::AudioError> start() override { return Platform::AudioError{reason_}; }
    void stop() override {}
    void cancel() override {}
    Platform::Subscription addConfigurationChangeObserver(std::function<void()> /*handler*/) override {
        return {};
    }

    Platform::AudioFormat inputFormat() override { return {}; }
    std::string deviceName() override { return {}; }
    void installTap(std::size_t /*bufferSize*/, const Platform::AudioFormat& /*format*/,
                    TapBlock /*block*/) override {}
    void removeTap() override {}

private:
    std::string reason_;
};

} // namespace

MissingSound::MissingSound(Platform::MainQueue& queue, std::string reason)
    : queue_(queue),
      reason_(std::move(reason)) {}

Platform::Subscription MissingSound::prepare() {
    return {};
}

bool MissingSound::hasInputDevice() {
    return false;
}

Platform::Subscription MissingSound::observeInputDevice(std::function<void(bool isThere)> observer) {
    auto alive = std::make_shared<const std::function<void(bool)>>(std::move(observer));
    queue_.async([weak = std::weak_ptr(alive)] {
        if (const auto stillThere = weak.lock()) {
            (*stillThere)(false);
        }
    });
    return Platform::Subscription([alive = std::move(alive)]() mutable { alive.reset(); });
}

std::shared_ptr<Platform::AudioEngine> MissingSound::makeEngine() {
    return std::make_shared<DeafEngine>(reason_);
}

std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
MissingSound::openFileForWriting(const std::string& /*path*/, const Platform::AudioFormat& /*settings*/) {
    return Platform::AudioError{reason_};
}

std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
MissingSound::makePlayer(const std::string& /*path*/) {
    return Platform::AudioError{reason_};
}

void MissingSound::setSuspended(bool /*isSuspended*/) {}

} // namespace LinuxPlatform
