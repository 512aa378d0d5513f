#include "tests/platform/MicrophoneCheck.h"

#include <cstdlib>

namespace {

using Curtain::EchoPhase;
using Curtain::MicStatus;
using TestSupport::SoundWorld;
using TestSupport::tone;

using Clock = std::chrono::steady_clock;

/// How long something kept its caller waiting.
template <class Action>
Clock::duration durationOf(const Action& action) {
    const auto start = Clock::now();
    action();
    return Clock::now() - start;
}

/// Far less than the patience with a sound server.
constexpr std::chrono::milliseconds atOnce{700};

struct SoundServerFaultsTest : TestSupport::MicrophoneCheck {};

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
    EXPECT_LT(durationOf([&] { EXPECT_FALSE(audio.hasInputDevice()); }), atOnce);
    EXPECT_LT(durationOf([&] { monitor->start(); }), atOnce);
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    SoundWorld::thaw();
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(SoundServerFaultsTest, AServerThatFreezesWhileMeteringDoesNotHoldUpTheStop) {
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    ASSERT_TRUE(levelBecomes(1, 1));
    SoundWorld::freeze();
    EXPECT_LT(durationOf([&] { monitor->stop(); }), atOnce);
    EXPECT_LT(durationOf([&] { monitor.reset(); }), atOnce);
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
