#include "Curtain/MicrophoneMonitor.h"

#include "Curtain/AudioLevel.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <variant>

namespace Curtain {
namespace {

constexpr std::size_t tapFrames = 1024;
constexpr float silenceThreshold = 0.02F;
constexpr Platform::MainQueue::Seconds echoDuration{3.0};

} // namespace

/// What the audio queue and the engine's thread work with; both hold it weakly.
struct MicrophoneMonitor::Shared {
    explicit Shared(Platform::MainQueue& queue) : mainQueue(queue) {}

    Platform::MainQueue& mainQueue;

    /// Guards the rest, for a moment at a time.
    std::mutex mutex;
    bool running = false;
    bool isEnding = false;
    /// The monitor takes it out before it goes, so that no other thread ever has to end it with this record.
    std::shared_ptr<Platform::AudioEngine> engine;
    /// The one that the audio queue may be waiting for.
    std::weak_ptr<Platform::AudioEngine> engineBeingSetUp;
    std::optional<Platform::AudioFormat> tapFormat;
    /// While an echo is recorded: a microphone that comes now is heard in this format, whatever its own.
    std::optional<Platform::AudioFormat> recordingFormat;
    std::shared_ptr<Platform::AudioFile> audioFile;
    std::string deviceName;
    /// On the main thread, when there is another one.
    std::function<void()> onDeviceName;
    /// The last buffer's, for the main thread; a message for each would be memory allocated on the engine's
    /// thread.
    float level = 0;
    /// As with the engine: it belongs to the main thread.
    std::unique_ptr<Platform::DispatchSource> levelSource;

    float lastLevel() {
        const std::scoped_lock lock(mutex);
        return level;
    }

    bool isRunning() {
        const std::scoped_lock lock(mutex);
        return running;
    }

    bool isRunning(const std::shared_ptr<Platform::AudioEngine>& thisEngine) {
        const std::scoped_lock lock(mutex);
        return running && thisEngine != nullptr && engine == thisEngine;
    }

    std::shared_ptr<Platform::AudioEngine> takeEngine() {
        const std::scoped_lock lock(mutex);
        running = false;
        return std::exchange(engine, nullptr);
    }

    /// On the audio queue. Returns false when the monitor is about to go.
    bool beginSetUp(const std::shared_ptr<Platform::AudioEngine>& thisEngine) {
        const std::scoped_lock lock(mutex);
        engineBeingSetUp = thisEngine;
        return !isEnding;
    }

    /// From now on the audio queue waits for no engine.
    void cancelSetUp() {
        std::shared_ptr<Platform::AudioEngine> waitedFor;
        {
            const std::scoped_lock lock(mutex);
            isEnding = true;
            waitedFor = engineBeingSetUp.lock();
        }
        if (waitedFor) {
            waitedFor->cancel();
        }
    }

    /// Closes the file, unless the engine's thread is writing to it: then that thread does when it is done.
    void dropFile() {
        std::shared_ptr<Platform::AudioFile> dropped;
        const std::scoped_lock lock(mutex);
        dropped.swap(audioFile);
        recordingFormat.reset();
    }

    void dropLevelSource() {
        std::unique_ptr<Platform::DispatchSource> dropped;
        const std::scoped_lock lock(mutex);
        dropped.swap(levelSource);
    }

    /// The format of a recording that begins now; none before the tap is there.
    std::optional<Platform::AudioFormat> beginRecording() {
        const std::scoped_lock lock(mutex);
        if (running) {
            recordingFormat = tapFormat;
        }
        return recordingFormat;
    }

    /// What the tap is installed with where the microphone delivers `inputFormat`.
    Platform::AudioFormat adoptFormat(const Platform::AudioFormat& inputFormat) {
        const std::scoped_lock lock(mutex);
        tapFormat = recordingFormat.value_or(inputFormat);
        return *tapFormat;
    }

    void setDeviceName(const std::string& name) {
        const std::scoped_lock lock(mutex);
        if (std::exchange(deviceName, name) != name) {
            mainQueue.async(onDeviceName);
        }
    }

    std::string lastDeviceName() {
        const std::scoped_lock lock(mutex);
        return deviceName;
    }

    /// On the audio queue. Returns whether there is a microphone.
    static bool installTap(const std::shared_ptr<Shared>& shared,
                           const std::shared_ptr<Platform::AudioEngine>& engine) {
        if (!shared->beginSetUp(engine)) {
            return false;
        }
        auto& input = engine->inputNode();
        const auto inputFormat = input.inputFormat();
        shared->setDeviceName(input.deviceName());
        if (inputFormat.channelCount == 0 || !(inputFormat.sampleRate > 0)) {
            return false;
        }
        input.removeTap();
        const auto format = shared->adoptFormat(inputFormat);
        input.installTap(tapFrames, format, [weak = std::weak_ptr(shared)](const auto& buffer) {
            if (const auto monitor = weak.lock()) {
                process(monitor, buffer);
            }
        });
        if (!engine->isRunning()) {
            engine->start();
        }
        return true;
    }

    /// On the engine's thread.
    static void process(const std::shared_ptr<Shared>& shared, const Platform::AudioPCMBuffer& buffer) {
        std::optional<float> level;
        if (buffer.floatChannelData != nullptr && buffer.format.channelCount > 0) {
            level = audioLevel(buffer);
        }
        std::shared_ptr<Platform::AudioFile> file;
        {
            const std::scoped_lock lock(shared->mutex);
            if (level && shared->levelSource) {
                shared->level = *level;
                shared->levelSource->signal();
            }
            file = shared->audioFile;
        }
        if (file) {
            file->write(buffer);
        }
    }
};

MicrophoneMonitor::MicrophoneMonitor(const Services& services)
    : services_(services),
      echoURL_((std::filesystem::path(services.folders.temporary()) / "curtain-mic-test.caf").string()),
      shared_(std::make_shared<Shared>(services.mainQueue)),
      audioQueue_(services.workQueues.makeSerial("com.curtain.microphone")) {
    shared_->levelSource = services_.mainQueue.makeSource([this] { showLevel(shared_->lastLevel()); });
    shared_->onDeviceName = lifetime_.weak([this] { showDeviceName(); });
    // What a crash may have left behind.
    services_.fileManager.removeItem(echoURL_);
}

MicrophoneMonitor::~MicrophoneMonitor() {
    inputDeviceObserver_ = {};
    configObserver_ = {};
    // The program's end waits for no sound server.
    shared_->cancelSetUp();
    audioQueue_.reset();
    shared_->takeEngine().reset();
    shared_->dropFile();
    shared_->dropLevelSource();
    player_.reset();
    services_.fileManager.removeItem(echoURL_);
}

float MicrophoneMonitor::level() const {
    return level_;
}

MicStatus MicrophoneMonitor::status() const {
    return status_;
}

EchoPhase MicrophoneMonitor::echoPhase() const {
    return echoPhase_;
}

std::string MicrophoneMonitor::deviceName() const {
    return deviceName_;
}

void MicrophoneMonitor::start() {
    using Platform::AuthorizationStatus;
    isWanted_ = true;
    switch (services_.authorization.status(Platform::MediaType::audio)) {
    case AuthorizationStatus::authorized:
        startMetering();
        return;
    case AuthorizationStatus::restricted:
    case AuthorizationStatus::denied:
        setStatus(MicStatus::noPermission);
        return;
    case AuthorizationStatus::notDetermined:
        services_.authorization.requestAccess(
            Platform::MediaType::audio,
            [&mainQueue = services_.mainQueue, answered = lifetime_.weak([this](bool isGranted) {
                if (!isGranted) {
                    setStatus(MicStatus::noPermission);
                } else if (isWanted_) {
                    startMetering();
                }
            })](bool isGranted) { mainQueue.async([answered, isGranted] { answered(isGranted); }); });
        return;
    }
    setStatus(MicStatus::unavailable);
}

void MicrophoneMonitor::startMetering() {
    if (shared_->isRunning()) {
        return;
    }
    isInputDeviceMissing_ = false;
    hasInputDeviceCome_ = false;
    if (!isInputDeviceObserved_) {
        isInputDeviceObserved_ = true;
        inputDeviceObserver_ =
            services_.audio.observeInputDevice([this](bool isThere) { inputDeviceChanged(isThere); });
    }
    const auto engine = services_.audio.makeEngine();
    {
        const std::scoped_lock lock(shared_->mutex);
        shared_->running = true;
        shared_->engine = engine;
    }
    const std::weak_ptr weakShared = shared_;
    const std::weak_ptr weakEngine = engine;
    configObserver_ =
        engine->addConfigurationChangeObserver([&audioQueue = *audioQueue_, weakShared, weakEngine] {
            audioQueue.async([weakShared, weakEngine] {
                const auto shared = weakShared.lock();
                const auto changed = weakEngine.lock();
                if (shared && shared->isRunning(changed)) {
                    Shared::installTap(shared, changed);
                }
            });
        });
    const auto onFailure =
        lifetime_.weak([this, weakEngine](MicStatus status) { failed(status, weakEngine.lock().get()); });
    const auto onSuccess = lifetime_.weak([this] {
        if (status_ == MicStatus::unknown) {
            setStatus(MicStatus::silent);
        }
    });
    audioQueue_->async([weakShared, engine, onFailure, onSuccess] {
        const auto shared = weakShared.lock();
        if (!shared) {
            return;
        }
        if (!Shared::installTap(shared, engine)) {
            shared->mainQueue.async([onFailure] { onFailure(MicStatus::noInputDevice); });
        } else if (engine->start()) {
            shared->mainQueue.async([onFailure] { onFailure(MicStatus::unavailable); });
        } else {
            shared->mainQueue.async(onSuccess);
        }
    });
}

void MicrophoneMonitor::failed(MicStatus status, const Platform::AudioEngine* engine) {
    setStatus(status);
    // Metering may have been stopped and started again since.
    if (engine != nullptr && engine == shared_->engine.get()) {
        configObserver_ = {};
        shared_->takeEngine().reset();
        if (status == MicStatus::noInputDevice && hasInputDeviceCome_) {
            startMetering();
        }
    }
}

void MicrophoneMonitor::inputDeviceChanged(bool isThere) {
    if (!shared_->isRunning()) {
        if (isThere && status_ == MicStatus::noInputDevice) {
            startMetering();
        }
        return;
    }
    isInputDeviceMissing_ = !isThere;
    hasInputDeviceCome_ = isThere;
    sayThatInputDeviceIsMissing();
}

void MicrophoneMonitor::sayThatInputDeviceIsMissing() {
    if (isInputDeviceMissing_ && shared_->isRunning() && echoPhase_ != EchoPhase::recording) {
        setStatus(MicStatus::noInputDevice);
    }
}

void MicrophoneMonitor::stop() {
    isWanted_ = false;
    isInputDeviceObserved_ = false;
    inputDeviceObserver_ = {};
    if (!shared_->isRunning()) {
        return;
    }
    auto engine = shared_->takeEngine();
    shared_->dropFile();
    configObserver_ = {};
    audioQueue_->async([engine = std::move(engine)] {
        engine->inputNode().removeTap();
        engine->stop();
    });
    if (std::exchange(level_, 0.0F) != 0.0F) {
        Q_EMIT changed();
    }
}

void MicrophoneMonitor::startEcho() {
    if (echoPhase_ == EchoPhase::recording || echoPhase_ == EchoPhase::playing) {
        return;
    }
    const auto settings = shared_->beginRecording();
    if (!settings) {
        start();
        return;
    }
    services_.fileManager.removeItem(echoURL_);
    auto opened = services_.audio.openFileForWriting(echoURL_, *settings);
    if (const auto* error = std::get_if<Platform::AudioError>(&opened)) {
        services_.log.writeLine("Curtain echo: error al crear archivo: " + error->localizedDescription);
        shared_->dropFile();
        setEchoPhase(EchoPhase::idle);
        return;
    }
    isRecordingOpen_ = true;
    std::shared_ptr<Platform::AudioFile> file(
        std::get<std::unique_ptr<Platform::AudioFile>>(opened).release(),
        [&mainQueue = services_.mainQueue,
         closed = lifetime_.weak([this] { recordingClosed(); })](Platform::AudioFile* last) {
            std::default_delete<Platform::AudioFile>()(last);
            mainQueue.async(closed);
        });
    {
        const std::scoped_lock lock(shared_->mutex);
        shared_->audioFile = std::move(file);
    }
    setEchoPhase(EchoPhase::recording);
    services_.mainQueue.asyncAfter(echoDuration, lifetime_.weak([this] { finishEcho(); }));
}

void MicrophoneMonitor::finishEcho() {
    isEchoDue_ = true;
    shared_->dropFile();
    if (!isRecordingOpen_) {
        playRecording();
    }
}

void MicrophoneMonitor::recordingClosed() {
    isRecordingOpen_ = false;
    if (isEchoDue_) {
        playRecording();
    }
}

void MicrophoneMonitor::playRecording() {
    isEchoDue_ = false;
    auto made = services_.audio.makePlayer(echoURL_);
    if (const auto* error = std::get_if<Platform::AudioError>(&made)) {
        services_.log.writeLine("Curtain echo: error al reproducir: " + error->localizedDescription);
        services_.fileManager.removeItem(echoURL_);
        setEchoPhase(EchoPhase::done);
        return;
    }
    player_ = std::move(std::get<std::unique_ptr<Platform::AudioPlayer>>(made));
    player_->setDelegate(this);
    player_->setVolume(1.0F);
    player_->prepareToPlay();
    player_->play();
    setEchoPhase(EchoPhase::playing);
}

void MicrophoneMonitor::requestPermission(std::function<void()> completion) {
    services_.authorization.requestAccess(
        Platform::MediaType::audio, [&mainQueue = services_.mainQueue, completion = std::move(completion)](
                                        bool /*isGranted*/) { mainQueue.async(completion); });
}

void MicrophoneMonitor::audioPlayerDidFinishPlaying(Platform::AudioPlayer& /*player*/,
                                                    bool /*successfully*/) {
    services_.fileManager.removeItem(echoURL_);
    setEchoPhase(EchoPhase::done);
}

void MicrophoneMonitor::showDeviceName() {
    const auto name = shared_->lastDeviceName();
    if (std::exchange(deviceName_, name) != name) {
        Q_EMIT changed();
    }
}

void MicrophoneMonitor::showLevel(float level) {
    if (!shared_->isRunning()) {
        // It was on its way when the metering ended.
        return;
    }
    bool hasChanged = std::exchange(level_, level) != level;
    if (echoPhase_ != EchoPhase::recording && !isInputDeviceMissing_) {
        const auto status = level > silenceThreshold ? MicStatus::working : MicStatus::silent;
        hasChanged = std::exchange(status_, status) != status || hasChanged;
    }
    if (hasChanged) {
        Q_EMIT changed();
    }
}

void MicrophoneMonitor::setStatus(MicStatus status) {
    if (std::exchange(status_, status) != status) {
        Q_EMIT changed();
    }
}

void MicrophoneMonitor::setEchoPhase(EchoPhase phase) {
    if (std::exchange(echoPhase_, phase) != phase) {
        Q_EMIT changed();
        sayThatInputDeviceIsMissing();
    }
}

} // namespace Curtain
