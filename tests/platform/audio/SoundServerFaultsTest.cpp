#include "tests/platform/audio/MicrophoneCheck.h"
#include "tests/platform/audio/SoundMixer.h"
#include "tests/platform/audio/StaleSoundConnection.h"
#include "tests/support/RunningTime.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using Curtain::EchoPhase;
using Curtain::MicStatus;
using TestSupport::runningTimeOf;
using TestSupport::SoundWorld;
using TestSupport::tone;

/// Far less than the patience with a sound server.
constexpr std::chrono::milliseconds atOnce{700};

/// Stands for the sound server while it exists. Takes calls, but never answers them.
class MuteSoundServer {
public:
    explicit MuteSoundServer(const std::filesystem::path& path)
        : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.string().copy(static_cast<char*>(address.sun_path), sizeof address.sun_path - 1);
        if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            listen(socket_, 16) != 0) {
            throw std::runtime_error(std::strerror(errno));
        }
        setenv("PULSE_SERVER", ("unix:" + path.string()).c_str(), 1);
    }
    ~MuteSoundServer() {
        unsetenv("PULSE_SERVER");
        close(socket_);
    }
    MuteSoundServer(const MuteSoundServer&) = delete;
    MuteSoundServer& operator=(const MuteSoundServer&) = delete;

    bool isCalled() const {
        pollfd question{socket_, POLLIN, 0};
        return poll(&question, 1, 0) == 1;
    }

    void hangUp() const { close(accept(socket_, nullptr, nullptr)); }

private:
    int socket_;
};

struct SoundServerFaultsTest : TestSupport::MicrophoneCheck {
    void meterATone() {
        sound.feed(tone(440, 0.5, 60));
        monitor->start();
        ASSERT_TRUE(levelBecomes(1, 1));
        ASSERT_TRUE(becomes(MicStatus::working));
    }

    /// With the tone still there.
    bool fallsSilent() { return levelBecomes(0, 0) && becomes(MicStatus::silent); }
};

TEST_F(SoundServerFaultsTest, WithoutAServerThereIsNoInputDevice) {
    setenv("PULSE_SERVER", "unix:/nowhere", 1);
    EXPECT_FALSE(audio.hasInputDevice());
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    unsetenv("PULSE_SERVER");
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(SoundServerFaultsTest, AServerThatHangsUpIsNotCalledAgainUntilItIsNeeded) {
    Platform::Subscription preparation;
    {
        const MuteSoundServer server(folder.path() / "socket");
        const auto isCalled = [&] { return server.isCalled(); };
        preparation = audio.prepare();
        ASSERT_TRUE(eventually(isCalled));
        server.hangUp();
        EXPECT_FALSE(TestSupport::waitUntil(isCalled, std::chrono::seconds(2)));
    }
    EXPECT_TRUE(eventually([&] { return audio.hasInputDevice(); }));
}

TEST_F(SoundServerFaultsTest, TheMeterGoesOnWhenTheServerComesBack) {
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    ASSERT_TRUE(levelBecomes(1, 1));
    SoundWorld::killServer();
    SoundWorld::startServer();
    EXPECT_TRUE(levelBecomes(0, 0));
    sound.feed(tone(440, 0.5, 60));
    EXPECT_TRUE(levelBecomes(1, 1));
    monitor->stop();
    EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
}

TEST_F(SoundServerFaultsTest, TheMicrophoneIsLetGoWhileTheComputerSleeps) {
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    ASSERT_TRUE(levelBecomes(1, 1));
    audio.setSuspended(true);
    EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
    audio.setSuspended(false);
    EXPECT_TRUE(eventually([] { return SoundWorld::hasOurRecording(); }));
    monitor->stop();
    EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
}

TEST_F(SoundServerFaultsTest, TheMeterIsStoppedWhileTheComputerSleeps) {
    startMetering();
    audio.setSuspended(true);
    monitor->stop();
    audio.setSuspended(false);
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(SoundServerFaultsTest, AfterAStopTheServerThatCameBackServesTheNextStart) {
    startMetering();
    SoundWorld::killServer();
    monitor->stop();
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    SoundWorld::startServer();
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(SoundServerFaultsTest, AFrozenServerCostsAStatusAndNoHang) {
    SoundWorld::freeze();
    EXPECT_LT(runningTimeOf([&] { EXPECT_FALSE(audio.hasInputDevice()); }), atOnce);
    EXPECT_LT(runningTimeOf([&] { monitor->start(); }), atOnce);
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    SoundWorld::thaw();
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(SoundServerFaultsTest, AServerThatDoesNotAnswerDoesNotHoldUpTheEnd) {
    const MuteSoundServer server(folder.path() / "socket");
    monitor->start();
    ASSERT_TRUE(eventually([&] { return server.isCalled(); }));
    EXPECT_LT(runningTimeOf([&] { monitor.reset(); }), atOnce);
}

TEST_F(SoundServerFaultsTest, AServerThatFreezesWhileMeteringDoesNotHoldUpTheStop) {
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    ASSERT_TRUE(levelBecomes(1, 1));
    SoundWorld::freeze();
    EXPECT_LT(runningTimeOf([&] { monitor->stop(); }), atOnce);
    EXPECT_LT(runningTimeOf([&] { monitor.reset(); }), atOnce);
    SoundWorld::thaw();
    EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
}

TEST_F(SoundServerFaultsTest, TheMeterGoesOnWhenTheServerThaws) {
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    ASSERT_TRUE(levelBecomes(1, 1));
    SoundWorld::freeze();
    sound.silence();
    SoundWorld::thaw();
    EXPECT_TRUE(levelBecomes(0, 0));
}

TEST_F(SoundServerFaultsTest, TheMeterFallsWhenTheServerFreezes) {
    ASSERT_NO_FATAL_FAILURE(meterATone());
    SoundWorld::freeze();
    EXPECT_TRUE(fallsSilent());
    SoundWorld::thaw();
    EXPECT_TRUE(levelBecomes(1, 1));
}

TEST_F(SoundServerFaultsTest, TheMeterFallsWhenTheMicrophoneIsUnplugged) {
    ASSERT_NO_FATAL_FAILURE(meterATone());
    SoundWorld::unplug();
    EXPECT_TRUE(levelBecomes(0, 0));
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    SoundWorld::plugIn();
    EXPECT_TRUE(levelBecomes(1, 1));
}

/// PipeWire wakes a source up at once when somebody records from it; PulseAudio does not.
using SuspendedMicrophoneTest = SoundServerFaultsTest;

TEST_F(SuspendedMicrophoneTest, TheMeterFallsUntilTheMicrophoneIsBack) {
    ASSERT_NO_FATAL_FAILURE(meterATone());
    SoundWorld::suspend(true);
    EXPECT_TRUE(fallsSilent());
    SoundWorld::suspend(false);
    EXPECT_TRUE(levelBecomes(1, 1));
}

TEST_F(SoundServerFaultsTest, AStreamThatAMixerEndsIsOpenedAgain) {
    ASSERT_NO_FATAL_FAILURE(meterATone());
    TestSupport::SoundMixer mixer;
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(mixer.endRecordingsOf("Curtain"));
        sound.silence();
        EXPECT_TRUE(levelBecomes(0, 0));
        sound.feed(tone(440, 0.5, 60));
        EXPECT_TRUE(levelBecomes(1, 1));
    }
}

TEST_F(SoundServerFaultsTest, NoSilenceComesAfterTheStop) {
    ASSERT_NO_FATAL_FAILURE(meterATone());
    SoundWorld::freeze();
    monitor->stop();
    EXPECT_FALSE(TestSupport::spinUntil([&] { return monitor->status() == MicStatus::silent; },
                                        std::chrono::milliseconds(1500)));
    SoundWorld::thaw();
}

/// PipeWire now and then leaves a connection with an old default microphone; PulseAudio keeps its word.
struct StaleConnectionTest : SoundServerFaultsTest {
    std::optional<TestSupport::StaleSoundConnection> stale;

    void SetUp() override {
        sound.addMicrophone("other", 48000);
        stale.emplace(folder.path());
        startMetering();
    }
    void TearDown() override { monitor.reset(); }
};

TEST_F(StaleConnectionTest, TheMeterFollowsTheDefaultMicrophoneAllTheSame) {
    sound.feed(tone(440, 0.5, 60), "other_feed");
    SoundWorld::makeDefault("other");
    EXPECT_TRUE(levelBecomes(1, 1));
}

TEST_F(StaleConnectionTest, AnotherDefaultMicrophoneDoesNotCutOffThePlayback) {
    using Clock = std::chrono::steady_clock;
    monitor->startEcho();
    // The last look before it plays.
    auto begin = Clock::now();
    ASSERT_TRUE(eventually([&] {
        const auto now = Clock::now();
        const bool isPlaying = monitor->echoPhase() == EchoPhase::playing;
        begin = isPlaying ? begin : now;
        return isPlaying;
    }));
    SoundWorld::makeDefault("other");
    EXPECT_TRUE(becomes(EchoPhase::done));
    // As long as the recording.
    EXPECT_GT(Clock::now() - begin, std::chrono::milliseconds(2800));
}

TEST_F(SoundServerFaultsTest, TenRestartsOfTheServerLeaveOneMeter) {
    startMetering();
    for (int round = 0; round < 10; ++round) {
        SoundWorld::killServer();
        SoundWorld::startServer();
    }
    sound.feed(tone(440, 0.5, 60));
    EXPECT_TRUE(levelBecomes(1, 1));
    EXPECT_EQ(SoundWorld::ourRecordings(), 1);
    EXPECT_LT(runningTimeOf([&] { monitor.reset(); }), std::chrono::seconds(1));
}

TEST_F(SoundServerFaultsTest, AServerThatFreezesInTheMiddleOfAnEchoEndsIt) {
    ASSERT_NO_FATAL_FAILURE(startRecordingATone());
    SoundWorld::freeze();
    EXPECT_TRUE(becomes(EchoPhase::done));
    EXPECT_FALSE(std::filesystem::exists(recording()));
    sound.silence();
    SoundWorld::thaw();
    EXPECT_TRUE(levelBecomes(0, 0));
}

TEST_F(SoundServerFaultsTest, AServerThatComesBackInTheMiddleOfAnEchoServesOn) {
    ASSERT_NO_FATAL_FAILURE(startRecordingATone());
    SoundWorld::killServer();
    SoundWorld::startServer();
    EXPECT_TRUE(becomes(EchoPhase::done));
    EXPECT_FALSE(std::filesystem::exists(recording()));
    sound.feed(tone(440, 0.5, 60));
    EXPECT_TRUE(levelBecomes(1, 1));
}

TEST_F(SoundServerFaultsTest, AnEchoThatCannotBePlayedIsDone) {
    startMetering();
    monitor->startEcho();
    SoundWorld::killServer();
    EXPECT_TRUE(becomes(EchoPhase::done));
    EXPECT_FALSE(std::filesystem::exists(recording()));
    EXPECT_TRUE(log.lines.empty());
}

} // namespace
