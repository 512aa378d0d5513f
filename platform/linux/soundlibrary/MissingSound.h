#pragma once

#include "platform/linux/soundlibrary/SoundToolkit.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>

namespace LinuxPlatform {

/// The toolkit of a computer whose sound cannot be had: no microphone is there, and nothing can be recorded
/// or played.
class MissingSound : public SoundToolkit {
public:
    /// `queue` outlives it.
    MissingSound(Platform::MainQueue& queue, std::string reason);

    Platform::Subscription prepare() override;
    bool hasInputDevice() override;
    Platform::Subscription observeInputDevice(std::function<void(bool isThere)> observer) override;
    std::shared_ptr<Platform::AudioEngine> makeEngine() override;
    std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
    openFileForWriting(const std::string& path, const Platform::AudioFormat& settings) override;
    std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
    makePlayer(const std::string& path) override;
    void setSuspended(bool isSuspended) override;

private:
    Platform::MainQueue& queue_;
    std::string reason_;
};

} // namespace LinuxPlatform
