#pragma once

#include "platform/AudioEngine.h"

#include <memory>
#include <string>

namespace LinuxPlatform {

class SoundServer;

/// Records from the default source. Its own thread is that of the server's loop, on which nobody may end it.
class PulseAudioEngine : public Platform::AudioEngine, public Platform::AudioInputNode {
public:
    explicit PulseAudioEngine(std::shared_ptr<SoundServer> server);
    ~PulseAudioEngine() override;
    PulseAudioEngine(const PulseAudioEngine&) = delete;
    PulseAudioEngine& operator=(const PulseAudioEngine&) = delete;

    Platform::AudioInputNode& inputNode() override { return *this; }
    bool isRunning() const override;
    std::optional<Platform::AudioError> start() override;
    void stop() override;
    void cancel() override;
    Platform::Subscription addConfigurationChangeObserver(std::function<void()> handler) override;

    Platform::AudioFormat inputFormat() override;
    std::string deviceName() override;
    void installTap(std::size_t bufferSize, const Platform::AudioFormat& format, TapBlock block) override;
    void removeTap() override;

private:
    class Recording;
    class Observers;

    // The server goes last: its loop works on the others.
    std::shared_ptr<SoundServer> server_;
    std::shared_ptr<Observers> observers_;
    std::shared_ptr<Recording> recording_;
};

} // namespace LinuxPlatform
