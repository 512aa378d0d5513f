#pragma once

#include "platform/AudioServices.h"
#include "platform/Subscribers.h"
#include "platform/Subscription.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace TestSupport {

/// What became of an engine; stays when the engine is gone.
struct FakeAudioEngineState {
    Platform::Subscribers<> configurationObservers;
    bool isRunning = false;
    bool exists = true;

    /// Hands a buffer to the tap, if there is one and the engine runs. Any thread.
    void feed(const Platform::AudioPCMBuffer& buffer) {
        const std::scoped_lock lock(tapMutex);
        if (isRunning && tap) {
            tap(buffer);
        }
    }

    /// Samples of one channel.
    void feedSamples(const std::vector<float>& samples) {
        feed({{1, 48000}, samples.data(), samples.size()});
    }

    std::mutex tapMutex;
    std::size_t tapBufferSize = 0;
    Platform::AudioFormat tapFormat;
    Platform::AudioInputNode::TapBlock tap;
};

/// A microphone and speakers that do what the test says.
class FakeAudioServices : public Platform::AudioServices {
public:
    /// What the input node reports; no channels for no microphone.
    Platform::AudioFormat inputFormat{1, 48000};
    std::string deviceName;
    std::optional<std::string> startError;
    std::optional<std::string> fileError;
    std::optional<std::string> playerError;
    bool doWritesFail = false;
    /// Called by every write, on the thread that writes.
    std::function<void()> onWrite;
    bool isInputDeviceThere = false;

    /// In order.
    std::vector<std::string> calls;
    std::vector<std::shared_ptr<FakeAudioEngineState>> engines;

    struct Recording {
        std::string path;
        Platform::AudioFormat settings;
        std::vector<float> samples;
        bool isOpen = true;
    };
    std::vector<std::shared_ptr<Recording>> recordings;

    struct Playback {
        std::string path;
        Platform::AudioPlayerDelegate* delegate = nullptr;
        Platform::AudioPlayer* player = nullptr;
        float volume = -1;
        bool isPrepared = false;
        bool isPlaying = false;
    };
    std::vector<std::shared_ptr<Playback>> playbacks;

    FakeAudioEngineState& engine() { return *engines.back(); }

    /// The device or its format has changed: stops the engine and says so.
    void changeConfiguration(const Platform::AudioFormat& format) {
        inputFormat = format;
        const auto state = engines.back();
        {
            const std::scoped_lock lock(state->tapMutex);
            state->isRunning = false;
        }
        state->configurationObservers.tell();
    }

    void finishPlaying(bool successfully) {
        const auto playback = playbacks.back();
        playback->isPlaying = false;
        playback->delegate->audioPlayerDidFinishPlaying(*playback->player, successfully);
    }

    int preparations = 0;
    /// Those that nobody has ended yet.
    Platform::Subscribers<> openPreparations;

    Platform::Subscription prepare() override {
        ++preparations;
        return openPreparations.add([] {});
    }
    bool hasInputDevice() override { return isInputDeviceThere; }
    Platform::Subscribers<bool> inputDeviceObservers;
    Platform::Subscription observeInputDevice(std::function<void(bool isThere)> observer) override {
        return inputDeviceObservers.add(std::move(observer));
    }

    std::shared_ptr<Platform::AudioEngine> makeEngine() override {
        calls.emplace_back("make engine");
        engines.push_back(std::make_shared<FakeAudioEngineState>());
        return std::make_shared<Engine>(*this, engines.back());
    }

    std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
    openFileForWriting(const std::string& path, const Platform::AudioFormat& settings) override {
        calls.push_back("open file " + path);
        if (fileError) {
            return Platform::AudioError{*fileError};
        }
        recordings.push_back(std::make_shared<Recording>(Recording{path, settings, {}}));
        return std::make_unique<File>(*this, recordings.back());
    }

    std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
    makePlayer(const std::string& path) override {
        calls.push_back("make player " + path);
        if (playerError) {
            return Platform::AudioError{*playerError};
        }
        playbacks.push_back(std::make_shared<Playback>(Playback{.path = path}));
        return std::make_unique<Player>(playbacks.back());
    }

private:
    class Engine : public Platform::AudioEngine, public Platform::AudioInputNode {
    public:
        Engine(FakeAudioServices& services, std::shared_ptr<FakeAudioEngineState> state)
            : services_(services),
              state_(std::move(state)) {}
        Engine(const Engine&) = delete;
        Engine& operator=(const Engine&) = delete;
        ~Engine() override {
            const std::scoped_lock lock(state_->tapMutex);
            state_->tap = nullptr;
            state_->isRunning = false;
            state_->exists = false;
        }

        Platform::AudioInputNode& inputNode() override { return *this; }
        bool isRunning() const override {
            const std::scoped_lock lock(state_->tapMutex);
            return state_->isRunning;
        }

        std::optional<Platform::AudioError> start() override {
            services_.calls.emplace_back("start");
            if (services_.startError) {
                return Platform::AudioError{*services_.startError};
            }
            const std::scoped_lock lock(state_->tapMutex);
            state_->isRunning = true;
            return std::nullopt;
        }

        void stop() override {
            services_.calls.emplace_back("stop");
            const std::scoped_lock lock(state_->tapMutex);
            state_->isRunning = false;
        }

        /// It never waits.
        void cancel() override {}

        Platform::Subscription addConfigurationChangeObserver(std::function<void()> handler) override {
            return state_->configurationObservers.add(std::move(handler));
        }

        Platform::AudioFormat inputFormat() override { return services_.inputFormat; }
        std::string deviceName() override { return services_.deviceName; }

        void installTap(std::size_t bufferSize, const Platform::AudioFormat& format,
                        TapBlock block) override {
            services_.calls.emplace_back("install tap");
            const std::scoped_lock lock(state_->tapMutex);
            state_->tapBufferSize = bufferSize;
            state_->tapFormat = format;
            state_->tap = std::move(block);
        }

        void removeTap() override {
            services_.calls.emplace_back("remove tap");
            const std::scoped_lock lock(state_->tapMutex);
            state_->tap = nullptr;
        }

    private:
        FakeAudioServices& services_;
        std::shared_ptr<FakeAudioEngineState> state_;
    };

    class File : public Platform::AudioFile {
    public:
        File(const FakeAudioServices& services, std::shared_ptr<Recording> recording)
            : services_(services),
              recording_(std::move(recording)) {}
        File(const File&) = delete;
        File& operator=(const File&) = delete;
        ~File() override { recording_->isOpen = false; }

        bool write(const Platform::AudioPCMBuffer& buffer) override {
            if (services_.onWrite) {
                services_.onWrite();
            }
            if (services_.doWritesFail || buffer.floatChannelData == nullptr ||
                buffer.format != recording_->settings) {
                return false;
            }
            const auto count = buffer.frameLength * buffer.format.channelCount;
            recording_->samples.insert(recording_->samples.end(), buffer.floatChannelData,
                                       buffer.floatChannelData + count);
            return true;
        }

    private:
        const FakeAudioServices& services_;
        std::shared_ptr<Recording> recording_;
    };

    class Player : public Platform::AudioPlayer {
    public:
        explicit Player(std::shared_ptr<Playback> playback) : playback_(std::move(playback)) {
            playback_->player = this;
        }
        Player(const Player&) = delete;
        Player& operator=(const Player&) = delete;
        ~Player() override { playback_->player = nullptr; }

        void setDelegate(Platform::AudioPlayerDelegate* delegate) override { playback_->delegate = delegate; }
        void setVolume(float volume) override { playback_->volume = volume; }
        void prepareToPlay() override { playback_->isPrepared = true; }
        void play() override { playback_->isPlaying = true; }

    private:
        std::shared_ptr<Playback> playback_;
    };
};

} // namespace TestSupport
