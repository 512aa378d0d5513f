#pragma once

#include "Curtain/MicrophoneMonitor.h"
#include "platform/linux/audio/PulseAudioServices.h"
#include "platform/linux/media/LinuxMediaAuthorization.h"
#include "platform/linux/system/PosixFileManager.h"
#include "platform/linux/system/ThreadWorkQueues.h"
#include "platform/qt/QtMainQueue.h"

#include "tests/support/EventLoop.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SoundWorld.h"

#include <QDBusConnection>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <optional>

namespace TestSupport {

/// The whole microphone check, on this world's sound server.
struct MicrophoneCheck : testing::Test {
    SoundWorld sound;
    TemporaryFolder folder;
    QtPlatform::QtMainQueue mainQueue;
    LinuxPlatform::ThreadWorkQueues workQueues;
    LinuxPlatform::PulseAudioServices audio{mainQueue};
    LinuxPlatform::LinuxMediaAuthorization authorization{QDBusConnection::sessionBus(), mainQueue, false};
    LinuxPlatform::PosixFileManager files;
    FakeUserFolders folders;
    RecordingLog log;
    std::optional<Curtain::MicrophoneMonitor> monitor;

    MicrophoneCheck() {
        folders.temporaryFolder = folder.path().string();
        makeMonitor();
    }

    void makeMonitor() {
        monitor.emplace(Curtain::MicrophoneMonitor::Services{audio, authorization, files, folders, mainQueue,
                                                             workQueues, log});
    }

    /// A busy computer takes its time.
    template <class Condition>
    static bool eventually(const Condition& condition) {
        return spinUntil(condition, std::chrono::seconds(20));
    }

    bool becomes(Curtain::MicStatus status) {
        return eventually([&] { return monitor->status() == status; });
    }
    bool becomes(Curtain::EchoPhase phase) {
        return eventually([&] { return monitor->echoPhase() == phase; });
    }
    bool levelBecomes(float low, float high) {
        return eventually([&] { return monitor->level() >= low && monitor->level() <= high; });
    }

    void startMetering() {
        monitor->start();
        ASSERT_TRUE(eventually([&] {
            return monitor->status() == Curtain::MicStatus::silent ||
                   monitor->status() == Curtain::MicStatus::working;
        }));
    }

    /// An echo test of a tone at half scale, of which some is in the file.
    void startRecordingATone() {
        sound.feed(tone(440, 0.5, 60));
        startMetering();
        ASSERT_TRUE(levelBecomes(1, 1));
        monitor->startEcho();
        ASSERT_TRUE(eventually([&] { return std::filesystem::file_size(recording()) > 20000; }));
    }

    std::filesystem::path recording() const { return folder.path() / "curtain-mic-test.caf"; }
};

} // namespace TestSupport
