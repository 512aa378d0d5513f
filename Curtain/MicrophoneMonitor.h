#pragma once

#include "platform/AudioServices.h"
#include "platform/FileManager.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/MediaAuthorization.h"
#include "platform/UserFolders.h"
#include "platform/WorkQueue.h"

#include <QObject>

#include <functional>

namespace Curtain {

enum class MicStatus { working, silent, noPermission, noInputDevice, unavailable, unknown };

enum class EchoPhase { idle, recording, playing, done };

/// The microphone check: a live level and a three-second echo test. Everything public belongs to the main
/// thread.
class MicrophoneMonitor : public QObject {
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

    /// Begins metering, after asking for permission where that is needed.
    void start();
    void stop();
    /// Begins the echo test, or only the metering where that does not run yet.
    void startEcho();
    /// `completion` runs on the main thread, whatever the answer. Publishes nothing.
    void requestPermission(std::function<void()> completion);

Q_SIGNALS:
    /// Any of the published values has changed.
    void changed();
};

} // namespace Curtain
