#include "Curtain/MicrophoneMonitor.h"
#include "platform/linux/PosixFileManager.h"
#include "platform/linux/ThreadWorkQueues.h"
#include "platform/linux/audio/PulseAudioServices.h"
#include "platform/linux/media/LinuxMediaAuthorization.h"
#include "platform/qt/QtMainQueue.h"

#include "tests/support/EventLoop.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SoundWorld.h"

#include <QDBusConnection>

#include <gmock/gmock.h>

#include <chrono>
#include <memory>
#include <optional>

namespace {

using namespace std::chrono_literals;
using Curtain::EchoPhase;
using Curtain::MicStatus;
using testing::IsEmpty;
using TestSupport::tone;

/// A busy computer takes its time.
constexpr auto patience = 20s;

/// The whole microphone check, on this world's sound server.
struct MicrophoneCheckTest : testing::Test {
    TestSupport::SoundWorld sound;
    TestSupport::TemporaryFolder folder;
    QtPlatform::QtMainQueue mainQueue;
    LinuxPlatform::ThreadWorkQueues workQueues;
    LinuxPlatform::PulseAudioServices audio{mainQueue};
    LinuxPlatform::LinuxMediaAuthorization authorization{QDBusConnection::sessionBus(), false};
    LinuxPlatform::PosixFileManager files;
    TestSupport::FakeUserFolders folders;
    TestSupport::RecordingLog log;
    std::optional<Curtain::MicrophoneMonitor> monitor;

    MicrophoneCheckTest() {
        folders.temporaryFolder = folder.path().string();
        monitor.emplace(Curtain::MicrophoneMonitor::Services{audio, authorization, files, folders, mainQueue,
                                                             workQueues, log});
    }

    template <class Condition>
    static bool eventually(const Condition& condition) {
        return TestSupport::spinUntil(condition, patience);
    }

    bool becomes(MicStatus status) {
        return eventually([&] { return monitor->status() == status; });
    }
    bool becomes(EchoPhase phase) {
        return eventually([&] { return monitor->echoPhase() == phase; });
    }
    bool levelBecomes(float low, float high) {
        return eventually([&] { return monitor->level() >= low && monitor->level() <= high; });
    }

    void startMetering() {
        monitor->start();
        ASSERT_TRUE(becomes(MicStatus::silent) || monitor->status() == MicStatus::working);
    }

    std::filesystem::path recording() const { return folder.path() / "curtain-mic-test.caf"; }
};

TEST_F(MicrophoneCheckTest, AToneAtHalfScaleIsWorkingAtOne) {
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
    EXPECT_TRUE(levelBecomes(1, 1));
}

TEST_F(MicrophoneCheckTest, AFaintToneIsSilent) {
    // Its root of the mean square is 0.0008.
    sound.feed(tone(440, 0.0008 * std::numbers::sqrt2, 60));
    monitor->start();
    EXPECT_TRUE(levelBecomes(0.0155F, 0.0165F));
    EXPECT_EQ(monitor->status(), MicStatus::silent);
}

TEST_F(MicrophoneCheckTest, NothingListensUnlessAsked) {
    EXPECT_FALSE(TestSupport::SoundWorld::hasOurRecording());
    startMetering();
    EXPECT_TRUE(eventually(TestSupport::SoundWorld::hasOurRecording));
    monitor->stop();
    EXPECT_TRUE(eventually([] { return !TestSupport::SoundWorld::hasOurRecording(); }));
}

TEST_F(MicrophoneCheckTest, WithoutAMicrophoneThereIsNoInputDevice) {
    TestSupport::SoundWorld::unplug();
    EXPECT_FALSE(audio.hasInputDevice());
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    TestSupport::SoundWorld::plugIn();
    EXPECT_TRUE(audio.hasInputDevice());
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(MicrophoneCheckTest, AMicrophoneThatIsUnpluggedIsNotReplacedByTheSpeakers) {
    sound.feed(tone(440, 0.01, 60));
    startMetering();
    ASSERT_TRUE(levelBecomes(0.13F, 0.15F));
    sound.feed(tone(440, 0.5, 60), "speakers");
    TestSupport::SoundWorld::unplug();
    ASSERT_TRUE(eventually([] { return !TestSupport::SoundWorld::hasOurRecording(); }));
    EXPECT_LT(monitor->level(), 0.5F);
    sound.feed(tone(440, 0.5, 60));
    TestSupport::SoundWorld::plugIn();
    EXPECT_TRUE(levelBecomes(1, 1));
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(MicrophoneCheckTest, TheMeterFollowsTheDefaultMicrophoneAndItsFormat) {
    sound.addMicrophone("other", 44100, "front-left,front-right");
    startMetering();
    ASSERT_TRUE(levelBecomes(0, 0));
    // Only the left channel counts.
    auto stereo = std::vector<float>();
    for (const auto sample : tone(440, 0.01, 60, 44100)) {
        stereo.push_back(sample);
        stereo.push_back(50 * sample);
    }
    sound.feed(stereo, "other_feed", 44100, 2);
    TestSupport::SoundWorld::makeDefault("other");
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
    TestSupport::SoundWorld::makeDefault("microphone");
    EXPECT_TRUE(levelBecomes(0, 0));
}

TEST_F(MicrophoneCheckTest, AMutedMicrophoneIsSilent) {
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    ASSERT_TRUE(becomes(MicStatus::working));
    TestSupport::outputOf("pactl set-source-mute microphone 1");
    EXPECT_TRUE(becomes(MicStatus::silent));
    TestSupport::outputOf("pactl set-source-mute microphone 0");
    EXPECT_TRUE(becomes(MicStatus::working));
}

} // namespace
