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
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

namespace TestSupport {

/// The event loop's queue. What is to happen later waits, while it is held, until the test lets it go on.
class HoldableQueue : public QtPlatform::QtMainQueue {
public:
    void hold() { isHeld_ = true; }
    void goOn() {
        isHeld_ = false;
        for (auto& task : std::exchange(waiting_, {})) {
            async(std::move(task));
        }
    }

    void asyncAfter(Seconds delay, Task task) override {
        if (isHeld_) {
            waiting_.push_back(std::move(task));
        } else {
            QtMainQueue::asyncAfter(delay, std::move(task));
        }
    }

private:
    bool isHeld_ = false;
    std::vector<Task> waiting_;
};

/// The whole microphone check, on this world's sound server.
struct MicrophoneCheck : testing::Test {
    SoundWorld sound;
    TemporaryFolder folder;
    QtPlatform::QtMainQueue mainQueue;
    /// What an echo test's recording waits for at its end.
    HoldableQueue recordingQueue;
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
        monitor.emplace(Curtain::MicrophoneMonitor::Services{audio, authorization, files, folders,
                                                             recordingQueue, workQueues, log});
    }

    /// A busy computer takes its time.
    template <class Condition>
    static bool eventually(const Condition& condition) {
        return spinUntil(condition, std::chrono::seconds(20));
    }

    /// Waits until what is read matches; a failure shows what was read last.
    template <class Read, class Matcher>
    static testing::AssertionResult comesToBe(const Read& read, const Matcher& matcher) {
        auto value = read();
        const bool isSo = eventually([&] {
            value = read();
            return testing::Matches(matcher)(value);
        });
        return (isSo ? testing::AssertionSuccess() : testing::AssertionFailure())
               << "in the end it is " << testing::PrintToString(value);
    }

    testing::AssertionResult becomes(Curtain::MicStatus status) {
        return comesToBe([&] { return static_cast<int>(monitor->status()); }, static_cast<int>(status));
    }
    testing::AssertionResult becomes(Curtain::EchoPhase phase) {
        return comesToBe([&] { return static_cast<int>(monitor->echoPhase()); }, static_cast<int>(phase));
    }
    testing::AssertionResult levelBecomes(float low, float high) {
        return comesToBe([&] { return monitor->level(); },
                         testing::AllOf(testing::Ge(low), testing::Le(high)));
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
        // It may be over before a machine that stalls gets round to looking.
        ASSERT_TRUE(eventually([&] {
            monitor->startEcho();
            return monitor->echoPhase() == Curtain::EchoPhase::recording && recordedBytes() > 20000;
        }));
    }

    std::uintmax_t recordedBytes() const {
        std::error_code error;
        const auto size = file_size(recording(), error);
        return error ? 0 : size;
    }

    std::filesystem::path recording() const { return folder.path() / "curtain-mic-test.caf"; }
};

} // namespace TestSupport
