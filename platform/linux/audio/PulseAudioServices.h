#pragma once

#include "platform/linux/soundlibrary/SoundToolkit.h"

#include <chrono>
#include <functional>
#include <memory>

namespace LinuxPlatform {

class SoundServer;

/// Sound through PulseAudio, or PipeWire in its place. There is a connection, and its thread, only while
/// somebody records or plays, or has prepared a question.
class PulseAudioServices : public SoundToolkit {
public:
    /// `mainQueue` outlives this object. `patience` is how long the server may take to answer.
    explicit PulseAudioServices(Platform::MainQueue& mainQueue,
                                std::chrono::milliseconds patience = std::chrono::seconds(2));
    ~PulseAudioServices() override;
    PulseAudioServices(const PulseAudioServices&) = delete;
    PulseAudioServices& operator=(const PulseAudioServices&) = delete;

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
    std::shared_ptr<SoundServer> server();

    Platform::MainQueue& mainQueue_;
    std::chrono::milliseconds patience_;
    std::weak_ptr<SoundServer> shared_;
};

} // namespace LinuxPlatform
