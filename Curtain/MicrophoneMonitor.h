#pragma once

#include "platform/AudioServices.h"
#include "platform/FileManager.h"
#include "platform/Lifetime.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/MediaAuthorization.h"
#include "platform/Subscription.h"
#include "platform/UserFolders.h"
#include "platform/WorkQueue.h"

#include <QObject>

#include <functional>
#include <memory>
#include <string>

namespace Curtain {

enum class MicStatus { working, silent, noPermission, noInputDevice, unavailable, unknown };

enum class EchoPhase { idle, recording, playing, done };

/// The microphone check: a live level and a three-second echo test. Everything public belongs to the main
/// thread.
class MicrophoneMonitor : public QObject, public Platform::AudioPlayerDelegate {
    Q_OBJECT

public:
    struct Services {
        Platform::AudioServices& audio;
        Platform::MediaAuthorization& authorization;
        Platform::FileManager& fileManager;
        Platform::UserFolders& folders;
        Platform::MainQueue& mainQueue;
        Platform::WorkQueues& workQueues;
        Platform::Log& log;
    };

    /// The services outlive the monitor.
    explicit MicrophoneMonitor(const Services& services);
    ~MicrophoneMonitor() override;

    /// 0 to 1.
    float level() const;
    MicStatus status() const;
    EchoPhase echoPhase() const;
    /// The microphone that is heard, by its own name; empty while there is none or it is not known.
    std::string deviceName() const;

    /// Begins metering, after asking for permission where that is needed.
    void start();
    void stop();
    /// Begins the echo test, or only the metering where that does not run yet.
    void startEcho();
    /// `completion` runs on the main thread, whatever the answer. Publishes nothing.
    void requestPermission(std::function<void()> completion);

    void audioPlayerDidFinishPlaying(Platform::AudioPlayer& player, bool successfully) override;

Q_SIGNALS:
    /// Any of the published values has changed.
    void changed();

private:
    struct Shared;

    void startMetering();
    void failed(MicStatus status, const Platform::AudioEngine* engine);
    void inputDeviceChanged(bool isThere);
    void sayThatInputDeviceIsMissing();
    void showLevel(float level);
    void showDeviceName();
    void finishEcho();
    void recordingClosed();
    void playRecording();
    void setStatus(MicStatus status);
    void setEchoPhase(EchoPhase phase);

    Services services_;
    std::string echoURL_;
    float level_ = 0;
    MicStatus status_ = MicStatus::unknown;
    EchoPhase echoPhase_ = EchoPhase::idle;
    std::string deviceName_;
    std::unique_ptr<Platform::AudioPlayer> player_;
    /// Whether somebody wants the level; metering may still be waiting for the permission.
    bool isWanted_ = false;
    /// Whether the microphone has gone while it was heard; silence is not what is wrong then.
    bool isInputDeviceMissing_ = false;
    /// Whether there is one since the present metering was begun, which may not have found it yet.
    bool hasInputDeviceCome_ = false;
    bool isRecordingOpen_ = false;
    bool isEchoDue_ = false;
    Platform::Lifetime lifetime_;
    std::shared_ptr<Shared> shared_;
    std::unique_ptr<Platform::WorkQueue> audioQueue_;
    Platform::Subscription configObserver_;
    /// While somebody wants the level.
    bool isInputDeviceObserved_ = false;
    Platform::Subscription inputDeviceObserver_;
};

} // namespace Curtain
