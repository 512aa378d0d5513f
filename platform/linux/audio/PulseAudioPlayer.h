#pragma once

#include "platform/AudioFormat.h"
#include "platform/AudioPlayer.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>

namespace LinuxPlatform {

class SoundServer;

/// Plays a sound file through the default sink, once.
class PulseAudioPlayer : public Platform::AudioPlayer {
public:
    /// Gives the connection to the sound server that others use, or a new one.
    using Connect = std::function<std::shared_ptr<SoundServer>()>;

    static std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
    open(const std::string& path, Platform::MainQueue& mainQueue, Connect connect);
    ~PulseAudioPlayer() override;
    PulseAudioPlayer(const PulseAudioPlayer&) = delete;
    PulseAudioPlayer& operator=(const PulseAudioPlayer&) = delete;

    void setDelegate(Platform::AudioPlayerDelegate* delegate) override { delegate_ = delegate; }
    void setVolume(float volume) override { volume_ = volume; }
    void prepareToPlay() override;
    void play() override;

private:
    class Source;
    class Playback;

    PulseAudioPlayer(std::unique_ptr<Source> source, Platform::MainQueue& mainQueue, Connect connect);
    void finished(bool successfully);
    void letGo();

    Platform::MainQueue& mainQueue_;
    Connect connect_;
    Platform::AudioPlayerDelegate* delegate_ = nullptr;
    float volume_ = 1;
    Platform::Lifetime lifetime_;
    // The server goes last: its loop works on the others.
    std::shared_ptr<SoundServer> server_;
    std::unique_ptr<Source> source_;
    std::shared_ptr<Playback> playback_;
};

} // namespace LinuxPlatform
