#include "Curtain/MicrophoneMonitor.h"

#include "tests/support/FakeAudioServices.h"
#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/support/RecordingLog.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <mutex>
#include <numbers>
#include <thread>

namespace {

using Curtain::EchoPhase;
using Curtain::MicStatus;
using Platform::AuthorizationStatus;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr const char* echoFile = "/run/user/1000/curtain-mic-test.caf";

struct MicrophoneMonitorTest : testing::Test {
    TestSupport::FakeAudioServices audio;
    TestSupport::FakeMediaAuthorization authorization;
    TestSupport::FakeInstallation files;
    TestSupport::FakeUserFolders folders;
    TestSupport::HandDrivenQueue mainQueue;
    TestSupport::HandDrivenWorkQueues workQueues;
    TestSupport::RecordingLog log;
    std::unique_ptr<Curtain::MicrophoneMonitor> monitor =
        std::make_unique<Curtain::MicrophoneMonitor>(Curtain::MicrophoneMonitor::Services{
            audio, authorization, files, folders, mainQueue, workQueues, log});

    void runAll() {
        do {
            workQueues.runAll();
            mainQueue.runReady();
        } while (workQueues.waiting() > 0);
    }

    void start() {
        monitor->start();
        runAll();
    }

    void feed(const std::vector<float>& samples) {
        audio.engine().feedSamples(samples);
        mainQueue.runReady();
    }

    /// In the format that the tap has asked for.
    void feedTap(float sample) {
        const auto format = audio.engine().tapFormat;
        const std::vector<float> frame(format.channelCount, sample);
        audio.engine().feed({format, frame.data(), 1});
        mainQueue.runReady();
    }

    void feedLoud() { feed({0.5F, -0.5F}); }
    void feedSilence() { feed(std::vector<float>(1024)); }

    void startRecording() {
        start();
        monitor->startEcho();
        ASSERT_EQ(monitor->echoPhase(), EchoPhase::recording);
    }

    void startPlaying() {
        startRecording();
        mainQueue.advance(3.0);
        ASSERT_EQ(monitor->echoPhase(), EchoPhase::playing);
    }

    long removals() const {
        return std::count(files.removedFiles.begin(), files.removedFiles.end(), echoFile);
    }
};

TEST_F(MicrophoneMonitorTest, NothingIsTriedAtFirst) {
    EXPECT_EQ(monitor->level(), 0.0F);
    EXPECT_EQ(monitor->status(), MicStatus::unknown);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::idle);
    EXPECT_THAT(audio.calls, IsEmpty());
    EXPECT_THAT(workQueues.labels, ElementsAre("com.curtain.microphone"));
}

TEST_F(MicrophoneMonitorTest, ARecordingLeftByACrashIsRemoved) {
    EXPECT_THAT(files.removedFiles, ElementsAre(echoFile));
}

TEST_F(MicrophoneMonitorTest, AuthorizedMetersAtOnce) {
    monitor->start();
    EXPECT_EQ(monitor->status(), MicStatus::unknown);
    EXPECT_THAT(audio.calls, ElementsAre("make engine"));
    runAll();
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    EXPECT_THAT(authorization.asked, IsEmpty());
    EXPECT_TRUE(audio.engine().isRunning);
    EXPECT_EQ(audio.engine().tapBufferSize, 1024U);
    EXPECT_EQ(audio.engine().tapFormat, (Platform::AudioFormat{1, 48000}));
}

TEST_F(MicrophoneMonitorTest, TheTapIsInstalledBeforeTheEngineStarts) {
    start();
    EXPECT_THAT(audio.calls, ElementsAre("make engine", "remove tap", "install tap", "start", "start"));
}

TEST_F(MicrophoneMonitorTest, RestrictedOrDeniedMakesNoEngine) {
    for (const auto status : {AuthorizationStatus::restricted, AuthorizationStatus::denied}) {
        authorization.statuses[Platform::MediaType::audio] = status;
        start();
        EXPECT_EQ(monitor->status(), MicStatus::noPermission);
        EXPECT_THAT(audio.calls, IsEmpty());
    }
}

TEST_F(MicrophoneMonitorTest, AStatusOfTheFutureIsUnavailable) {
    authorization.statuses[Platform::MediaType::audio] = static_cast<AuthorizationStatus>(4);
    start();
    EXPECT_EQ(monitor->status(), MicStatus::unavailable);
    EXPECT_THAT(audio.calls, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, NotDeterminedAsksFirst) {
    authorization.statuses[Platform::MediaType::audio] = AuthorizationStatus::notDetermined;
    start();
    EXPECT_EQ(monitor->status(), MicStatus::unknown);
    EXPECT_THAT(audio.calls, IsEmpty());
    EXPECT_THAT(authorization.asked, ElementsAre(Platform::MediaType::audio));
    authorization.answer(true);
    EXPECT_THAT(audio.calls, IsEmpty()) << "The answer belongs to the main thread.";
    runAll();
    EXPECT_EQ(monitor->status(), MicStatus::silent);
}

TEST_F(MicrophoneMonitorTest, ARefusalIsNoPermission) {
    authorization.statuses[Platform::MediaType::audio] = AuthorizationStatus::notDetermined;
    start();
    authorization.answer(false);
    EXPECT_EQ(monitor->status(), MicStatus::unknown);
    runAll();
    EXPECT_EQ(monitor->status(), MicStatus::noPermission);
    EXPECT_THAT(audio.calls, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, AnAnswerAfterTheEndIsIgnored) {
    authorization.statuses[Platform::MediaType::audio] = AuthorizationStatus::notDetermined;
    start();
    monitor.reset();
    authorization.answer(true);
    runAll();
    EXPECT_THAT(audio.calls, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, AnAnswerAfterTheStopTurnsNothingOn) {
    authorization.statuses[Platform::MediaType::audio] = AuthorizationStatus::notDetermined;
    start();
    monitor->stop();
    authorization.answer(true);
    runAll();
    EXPECT_THAT(audio.calls, IsEmpty());
    start();
    EXPECT_TRUE(audio.engine().isRunning);
}

TEST_F(MicrophoneMonitorTest, AnAnswerAfterAStopAndAnotherStartTurnsOneEngineOn) {
    authorization.statuses[Platform::MediaType::audio] = AuthorizationStatus::notDetermined;
    start();
    monitor->stop();
    start();
    authorization.answer(true);
    runAll();
    EXPECT_THAT(audio.engines, SizeIs(1));
    EXPECT_TRUE(audio.engine().isRunning);
}

TEST_F(MicrophoneMonitorTest, RequestingPermissionPublishesNothing) {
    authorization.statuses[Platform::MediaType::audio] = AuthorizationStatus::notDetermined;
    int completions = 0;
    for (const bool isGranted : {true, false}) {
        completions = 0;
        monitor->requestPermission([&] { ++completions; });
        authorization.answer(isGranted);
        EXPECT_EQ(completions, 0);
        runAll();
        EXPECT_EQ(completions, 1);
        EXPECT_EQ(monitor->status(), MicStatus::unknown);
    }
    EXPECT_THAT(audio.calls, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, WithoutAUsableFormatThereIsNoInputDevice) {
    const auto nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& format : {Platform::AudioFormat{0, 48000}, {1, 0}, {1, -1}, {1, nan}, {0, 0}}) {
        audio.calls.clear();
        audio.inputFormat = format;
        start();
        EXPECT_EQ(monitor->status(), MicStatus::noInputDevice);
        EXPECT_THAT(audio.calls, ElementsAre("make engine"));
        EXPECT_FALSE(audio.engine().exists);
        EXPECT_TRUE(audio.engine().configurationObservers.isEmpty());
    }
}

TEST_F(MicrophoneMonitorTest, AnEngineThatDoesNotStartIsUnavailable) {
    audio.startError = "no luck";
    start();
    EXPECT_EQ(monitor->status(), MicStatus::unavailable);
    EXPECT_FALSE(audio.engine().exists);
    EXPECT_THAT(audio.calls, Not(Contains("stop")));
    EXPECT_TRUE(audio.engine().configurationObservers.isEmpty());
}

TEST_F(MicrophoneMonitorTest, ALaterStartTriesAgainAndLeavesTheFailureToTheFirstBuffer) {
    audio.inputFormat = {};
    start();
    audio.inputFormat = {2, 44100};
    start();
    EXPECT_THAT(audio.engines, SizeIs(2));
    EXPECT_EQ(monitor->status(), MicStatus::noInputDevice);
    feedSilence();
    EXPECT_EQ(monitor->status(), MicStatus::silent);
}

TEST_F(MicrophoneMonitorTest, StartingTwiceKeepsOneEngine) {
    start();
    monitor->start();
    start();
    EXPECT_THAT(audio.engines, SizeIs(1));
}

TEST_F(MicrophoneMonitorTest, EveryStartMakesANewEngine) {
    start();
    monitor->stop();
    start();
    EXPECT_THAT(audio.engines, SizeIs(2));
    EXPECT_FALSE(audio.engines.front()->exists);
    EXPECT_TRUE(audio.engine().isRunning);
}

TEST_F(MicrophoneMonitorTest, TheMicrophoneIsNamedAndFollowed) {
    audio.deviceName = "Headset";
    int changes = 0;
    QObject::connect(monitor.get(), &Curtain::MicrophoneMonitor::changed, [&] { ++changes; });
    start();
    EXPECT_EQ(monitor->deviceName(), "Headset");
    audio.deviceName = "Built-in";
    changes = 0;
    audio.changeConfiguration({1, 48000});
    runAll();
    EXPECT_EQ(monitor->deviceName(), "Built-in");
    EXPECT_EQ(changes, 1);
    audio.deviceName.clear();
    audio.changeConfiguration({});
    runAll();
    EXPECT_EQ(monitor->deviceName(), "");
}

TEST_F(MicrophoneMonitorTest, StatusFollowsEveryBuffer) {
    start();
    feedLoud();
    EXPECT_EQ(monitor->level(), 1.0F);
    EXPECT_EQ(monitor->status(), MicStatus::working);
    feedSilence();
    EXPECT_EQ(monitor->level(), 0.0F);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    feed({0.0008F, -0.0008F});
    EXPECT_NEAR(monitor->level(), 0.016F, 1e-6F);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    feed({0.01F});
    EXPECT_FLOAT_EQ(monitor->level(), 0.2F);
    EXPECT_EQ(monitor->status(), MicStatus::working);
}

TEST_F(MicrophoneMonitorTest, AFullScaleSineIsWorkingAtOne) {
    start();
    std::vector<float> sine(1024);
    for (std::size_t frame = 0; frame < sine.size(); ++frame) {
        sine[frame] = std::sin(2 * std::numbers::pi_v<float> * static_cast<float>(frame) / 64);
    }
    feed(sine);
    EXPECT_EQ(monitor->level(), 1.0F);
    EXPECT_EQ(monitor->status(), MicStatus::working);
}

TEST_F(MicrophoneMonitorTest, ExactlyTheThresholdIsSilent) {
    start();
    feedLoud();
    float sample = 0.00101F;
    do {
        sample = std::nextafter(sample, 0.0F);
        feed({sample});
    } while (monitor->level() > 0.02F);
    ASSERT_EQ(monitor->level(), 0.02F);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    feed({std::nextafter(sample, 1.0F)});
    ASSERT_GT(monitor->level(), 0.02F);
    EXPECT_EQ(monitor->status(), MicStatus::working);
}

TEST_F(MicrophoneMonitorTest, AnEmptyBufferIsSilent) {
    start();
    feedLoud();
    const float sample = 1;
    audio.engine().feed({{1, 48000}, &sample, 0});
    mainQueue.runReady();
    EXPECT_EQ(monitor->level(), 0.0F);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
}

TEST_F(MicrophoneMonitorTest, ABufferWithoutFloatSamplesChangesNothing) {
    start();
    feedLoud();
    const std::vector<float> samples(8);
    audio.engine().feed({{1, 48000}, nullptr, 8});
    audio.engine().feed({{0, 48000}, samples.data(), 8});
    mainQueue.runReady();
    EXPECT_EQ(monitor->level(), 1.0F);
    EXPECT_EQ(monitor->status(), MicStatus::working);
}

TEST_F(MicrophoneMonitorTest, OddBuffersKeepTheLevelANumber) {
    start();
    for (const float sample :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity()}) {
        feed({0.1F, sample});
        EXPECT_GE(monitor->level(), 0.0F);
        EXPECT_LE(monitor->level(), 1.0F);
    }
    feed({0.01F});
    EXPECT_FLOAT_EQ(monitor->level(), 0.2F);
    feed(std::vector<float>(1'000'000, 0.01F));
    EXPECT_NEAR(monitor->level(), 0.2F, 1e-4F);
    const std::vector<float> eight(std::size_t{8} * 4096, 0.01F);
    audio.engine().feed({{8, 192000}, eight.data(), 4096});
    mainQueue.runReady();
    EXPECT_NEAR(monitor->level(), 0.2F, 1e-4F);
}

TEST_F(MicrophoneMonitorTest, LevelsArePublishedOnTheMainThreadOnly) {
    start();
    audio.engine().feedSamples({0.5F});
    EXPECT_EQ(monitor->level(), 0.0F);
    mainQueue.runReady();
    EXPECT_EQ(monitor->level(), 1.0F);
}

TEST_F(MicrophoneMonitorTest, TellsWhenAPublishedValueChanges) {
    int changes = 0;
    QObject::connect(monitor.get(), &Curtain::MicrophoneMonitor::changed, [&] { ++changes; });
    start();
    EXPECT_EQ(changes, 1);
    feedLoud();
    EXPECT_EQ(changes, 2);
    feedLoud();
    EXPECT_EQ(changes, 2);
    monitor->stop();
    EXPECT_EQ(changes, 3);
}

TEST_F(MicrophoneMonitorTest, StoppingRemovesTheTapAndStopsTheEngineOnTheQueue) {
    start();
    feedLoud();
    audio.calls.clear();
    monitor->stop();
    EXPECT_EQ(monitor->level(), 0.0F);
    EXPECT_EQ(monitor->status(), MicStatus::working);
    EXPECT_TRUE(audio.engine().configurationObservers.isEmpty());
    EXPECT_THAT(audio.calls, IsEmpty());
    runAll();
    EXPECT_THAT(audio.calls, ElementsAre("remove tap", "stop"));
    EXPECT_FALSE(audio.engine().exists);
    feedLoud();
    EXPECT_EQ(monitor->level(), 0.0F);
}

TEST_F(MicrophoneMonitorTest, AMicrophoneThatComesWhileItIsWantedIsHeard) {
    const auto format = audio.inputFormat;
    audio.inputFormat = {};
    start();
    ASSERT_EQ(monitor->status(), MicStatus::noInputDevice);
    audio.inputDeviceObservers.tell(false);
    runAll();
    EXPECT_THAT(audio.engines, SizeIs(1));
    audio.inputFormat = format;
    audio.inputDeviceObservers.tell(true);
    runAll();
    EXPECT_THAT(audio.engines, SizeIs(2));
    feedLoud();
    EXPECT_EQ(monitor->status(), MicStatus::working);
}

TEST_F(MicrophoneMonitorTest, AMicrophoneThatComesJustAfterItWasLookedForIsHeard) {
    const auto format = audio.inputFormat;
    audio.inputFormat = {};
    monitor->start();
    workQueues.runAll();
    audio.inputFormat = format;
    audio.inputDeviceObservers.tell(true);
    runAll();
    EXPECT_THAT(audio.engines, SizeIs(2));
    feedLoud();
    EXPECT_EQ(monitor->status(), MicStatus::working);
    // Where it cannot be opened all the same, that is the end of it.
    monitor->stop();
    audio.inputFormat = {};
    monitor->start();
    audio.inputDeviceObservers.tell(true);
    runAll();
    EXPECT_THAT(audio.engines, SizeIs(4));
    EXPECT_EQ(monitor->status(), MicStatus::noInputDevice);
}

TEST_F(MicrophoneMonitorTest, AMicrophoneThatGoesIsSaidAtOnceAndItsReturnToo) {
    start();
    feedLoud();
    audio.inputDeviceObservers.tell(false);
    EXPECT_EQ(monitor->status(), MicStatus::noInputDevice);
    // The meter falls, which is no word on the microphone.
    feedSilence();
    EXPECT_EQ(monitor->level(), 0.0F);
    EXPECT_EQ(monitor->status(), MicStatus::noInputDevice);
    audio.inputDeviceObservers.tell(true);
    feedSilence();
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    EXPECT_THAT(audio.engines, SizeIs(1));
}

TEST_F(MicrophoneMonitorTest, AMicrophoneThatGoesInTheMiddleOfARecordingIsSaidAfterwards) {
    startRecording();
    audio.inputDeviceObservers.tell(false);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    mainQueue.advance(3.0);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_EQ(monitor->status(), MicStatus::noInputDevice);
}

TEST_F(MicrophoneMonitorTest, NobodyLooksForMicrophonesUnlessTheLevelIsWanted) {
    EXPECT_TRUE(audio.inputDeviceObservers.isEmpty());
    audio.inputFormat = {};
    start();
    start();
    EXPECT_FALSE(audio.inputDeviceObservers.isEmpty());
    monitor->stop();
    EXPECT_TRUE(audio.inputDeviceObservers.isEmpty());
}

TEST_F(MicrophoneMonitorTest, ALevelThatIsOnItsWayAtTheEndIsNotShown) {
    start();
    const std::vector<float> loud(1024, 0.5F);
    audio.engine().feedSamples(loud);
    monitor->stop();
    runAll();
    EXPECT_EQ(monitor->level(), 0.0F);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
}

TEST_F(MicrophoneMonitorTest, StoppingWhenNotRunningDoesNothing) {
    monitor->stop();
    runAll();
    EXPECT_THAT(audio.calls, IsEmpty());
    start();
    monitor->stop();
    runAll();
    audio.calls.clear();
    monitor->stop();
    runAll();
    EXPECT_THAT(audio.calls, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, StoppingBeforeTheSetUpHasRunEndsTheEngine) {
    monitor->start();
    monitor->stop();
    runAll();
    EXPECT_FALSE(audio.engine().exists);
}

TEST_F(MicrophoneMonitorTest, AFailureOfAnEarlierStartLeavesTheNextOneAlone) {
    audio.inputFormat = {};
    monitor->start();
    workQueues.runAll();
    audio.inputFormat = {1, 48000};
    monitor->stop();
    monitor->start();
    runAll();
    EXPECT_TRUE(audio.engine().isRunning);
    feedLoud();
    EXPECT_EQ(monitor->status(), MicStatus::working);
    monitor->stop();
    runAll();
    EXPECT_FALSE(audio.engine().exists);
}

TEST_F(MicrophoneMonitorTest, AConfigurationChangeInstallsTheTapAgain) {
    start();
    audio.calls.clear();
    audio.changeConfiguration({2, 44100});
    EXPECT_THAT(audio.calls, IsEmpty());
    runAll();
    EXPECT_THAT(audio.calls, ElementsAre("remove tap", "install tap", "start"));
    EXPECT_EQ(audio.engine().tapFormat, (Platform::AudioFormat{2, 44100}));
    EXPECT_TRUE(audio.engine().isRunning);
}

TEST_F(MicrophoneMonitorTest, AMicrophoneThatGoesIsNotMissedAndWorksAgainWhenItReturns) {
    start();
    feedLoud();
    audio.changeConfiguration({});
    runAll();
    EXPECT_EQ(monitor->status(), MicStatus::working);
    EXPECT_TRUE(audio.engine().exists);
    audio.changeConfiguration({1, 48000});
    runAll();
    feedSilence();
    EXPECT_EQ(monitor->status(), MicStatus::silent);
}

TEST_F(MicrophoneMonitorTest, AFailedRestartAfterAConfigurationChangeIsIgnored) {
    start();
    audio.startError = "no luck";
    audio.changeConfiguration({2, 44100});
    runAll();
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    EXPECT_TRUE(audio.engine().exists);
}

TEST_F(MicrophoneMonitorTest, AConfigurationChangeAfterTheStopDoesNothing) {
    start();
    audio.changeConfiguration({2, 44100});
    monitor->stop();
    audio.calls.clear();
    runAll();
    EXPECT_THAT(audio.calls, ElementsAre("remove tap", "stop"));
    audio.changeConfiguration({1, 48000});
    runAll();
    EXPECT_THAT(audio.calls, ElementsAre("remove tap", "stop"));
}

TEST_F(MicrophoneMonitorTest, AConfigurationChangeOfAnEarlierEngineDoesNothing) {
    start();
    audio.changeConfiguration({2, 44100});
    monitor->stop();
    monitor->start();
    audio.calls.clear();
    runAll();
    EXPECT_THAT(audio.calls,
                ElementsAre("remove tap", "stop", "remove tap", "install tap", "start", "start"));
}

TEST_F(MicrophoneMonitorTest, AnEchoWithoutMeteringOnlyStartsTheMetering) {
    monitor->startEcho();
    runAll();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::idle);
    EXPECT_TRUE(audio.engine().isRunning);
    EXPECT_THAT(audio.recordings, IsEmpty());
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
}

TEST_F(MicrophoneMonitorTest, AnEchoBeforeTheTapIsInstalledWaitsForTheNextPress) {
    monitor->start();
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::idle);
    runAll();
    EXPECT_THAT(audio.engines, SizeIs(1));
    EXPECT_THAT(audio.recordings, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, TheEchoRecordsThreeSecondsAndPlaysThemAtFullVolume) {
    start();
    feed({0.1F});
    files.removedFiles.clear();
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
    EXPECT_THAT(files.removedFiles, ElementsAre(echoFile));
    ASSERT_THAT(audio.recordings, SizeIs(1));
    EXPECT_EQ(audio.recordings.front()->path, echoFile);
    EXPECT_EQ(audio.recordings.front()->settings, (Platform::AudioFormat{1, 48000}));
    feed({0.2F, 0.3F});
    mainQueue.advance(2.999);
    feed({0.4F});
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
    EXPECT_THAT(audio.playbacks, IsEmpty());
    mainQueue.advance(0.001);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_THAT(audio.recordings.front()->samples, ElementsAre(0.2F, 0.3F, 0.4F));
    EXPECT_FALSE(audio.recordings.front()->isOpen);
    const auto& playback = *audio.playbacks.back();
    EXPECT_EQ(playback.path, echoFile);
    EXPECT_EQ(playback.volume, 1.0F);
    EXPECT_TRUE(playback.isPrepared);
    EXPECT_TRUE(playback.isPlaying);
    EXPECT_EQ(playback.delegate, monitor.get());
    EXPECT_THAT(files.removedFiles, ElementsAre(echoFile));
    feed({0.5F});
    EXPECT_THAT(audio.recordings.front()->samples, SizeIs(3));
}

TEST_F(MicrophoneMonitorTest, AnotherMicrophoneDuringTheRecordingIsHeardInTheRecordingsFormat) {
    startRecording();
    feedTap(0.1F);
    audio.changeConfiguration({2, 44100});
    runAll();
    EXPECT_EQ(audio.engine().tapFormat, (Platform::AudioFormat{1, 48000}));
    EXPECT_TRUE(audio.engine().isRunning);
    feedTap(0.2F);
    mainQueue.advance(3.0);
    EXPECT_THAT(audio.recordings.front()->samples, ElementsAre(0.1F, 0.2F));
    audio.finishPlaying(true);
    audio.changeConfiguration({2, 44100});
    runAll();
    EXPECT_EQ(audio.engine().tapFormat, (Platform::AudioFormat{2, 44100}));
}

TEST_F(MicrophoneMonitorTest, AnEchoBeforeTheNextSetUpIsRecordedInTheFormatItBeganWith) {
    start();
    monitor->stop();
    runAll();
    audio.inputFormat = {2, 44100};
    monitor->start();
    monitor->startEcho();
    ASSERT_EQ(monitor->echoPhase(), EchoPhase::recording);
    runAll();
    feedTap(0.1F);
    mainQueue.advance(3.0);
    EXPECT_THAT(audio.recordings.front()->samples, ElementsAre(0.1F));
    audio.finishPlaying(true);
    monitor->stop();
    start();
    EXPECT_EQ(audio.engine().tapFormat, (Platform::AudioFormat{2, 44100}));
}

TEST_F(MicrophoneMonitorTest, ARecordingThatWasStoppedDoesNotFixTheFormatOfTheNextSetUp) {
    startRecording();
    monitor->stop();
    audio.inputFormat = {2, 44100};
    start();
    EXPECT_EQ(audio.engine().tapFormat, (Platform::AudioFormat{2, 44100}));
}

TEST_F(MicrophoneMonitorTest, AFileThatCannotBeMadeDoesNotFixTheFormatOfTheNextSetUp) {
    start();
    audio.fileError = "disco lleno";
    monitor->startEcho();
    audio.changeConfiguration({2, 44100});
    runAll();
    EXPECT_EQ(audio.engine().tapFormat, (Platform::AudioFormat{2, 44100}));
}

TEST_F(MicrophoneMonitorTest, PlaybackWaitsForTheBufferInFlight) {
    startRecording();
    auto& engine = audio.engine();
    std::thread tap;
    {
        std::atomic<bool> isInTap = false;
        std::atomic<bool> mayGoOn = false;
        audio.onWrite = [&] {
            isInTap = true;
            isInTap.notify_all();
            mayGoOn.wait(false);
        };
        tap = std::thread([&] { engine.feedSamples({0.7F}); });
        isInTap.wait(false);
        mainQueue.advance(3.0);
        EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
        EXPECT_THAT(audio.playbacks, IsEmpty());
        EXPECT_TRUE(audio.recordings.front()->isOpen);
        mayGoOn = true;
        mayGoOn.notify_all();
        tap.join();
    }
    mainQueue.runReady();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_FALSE(audio.recordings.front()->isOpen);
    EXPECT_THAT(audio.recordings.front()->samples, ElementsAre(0.7F));
}

TEST_F(MicrophoneMonitorTest, TheEchoIsDoneHoweverThePlaybackEnds) {
    for (const bool isSuccessful : {true, false}) {
        startPlaying();
        const auto before = removals();
        audio.finishPlaying(isSuccessful);
        EXPECT_EQ(monitor->echoPhase(), EchoPhase::done);
        EXPECT_EQ(removals(), before + 1);
        EXPECT_NE(audio.playbacks.back()->player, nullptr) << "The player stays until the next echo.";
    }
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, AnotherEchoIsIgnoredWhileOneRuns) {
    startRecording();
    mainQueue.advance(1.0);
    monitor->startEcho();
    EXPECT_THAT(audio.recordings, SizeIs(1));
    mainQueue.advance(2.0);
    ASSERT_EQ(monitor->echoPhase(), EchoPhase::playing);
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_THAT(audio.recordings, SizeIs(1));
    mainQueue.advance(10.0);
    EXPECT_THAT(audio.playbacks, SizeIs(1));
}

TEST_F(MicrophoneMonitorTest, AnEchoStartsOverFromDone) {
    startPlaying();
    audio.finishPlaying(true);
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
    EXPECT_THAT(audio.recordings, SizeIs(2));
    mainQueue.advance(3.0);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_EQ(audio.playbacks.front()->player, nullptr);
}

TEST_F(MicrophoneMonitorTest, TheStatusIsFrozenWhileRecording) {
    start();
    feedSilence();
    monitor->startEcho();
    feedLoud();
    EXPECT_EQ(monitor->level(), 1.0F);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    mainQueue.advance(3.0);
    EXPECT_EQ(monitor->status(), MicStatus::silent);
    feedLoud();
    EXPECT_EQ(monitor->status(), MicStatus::working);
}

TEST_F(MicrophoneMonitorTest, AFileThatCannotBeMadeReturnsToIdle) {
    start();
    audio.fileError = "disco lleno";
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::idle);
    EXPECT_THAT(log.lines, ElementsAre("Curtain echo: error al crear archivo: disco lleno"));
    mainQueue.advance(10.0);
    EXPECT_THAT(audio.playbacks, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, AFileThatCannotBeMadeIsTheOnlyWayBackFromDone) {
    startPlaying();
    audio.finishPlaying(true);
    monitor->stop();
    start();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::done);
    audio.fileError = "no";
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::idle);
}

TEST_F(MicrophoneMonitorTest, ARecordingThatCannotBePlayedIsDone) {
    startRecording();
    audio.playerError = "no existe";
    const auto before = removals();
    mainQueue.advance(3.0);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::done);
    EXPECT_THAT(log.lines, ElementsAre("Curtain echo: error al reproducir: no existe"));
    EXPECT_EQ(removals(), before + 1) << "Nobody will ever hear it.";
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
}

TEST_F(MicrophoneMonitorTest, TheEndRemovesTheRecordingWhateverBecameOfTheEcho) {
    startPlaying();
    audio.finishPlaying(true);
    const auto before = removals();
    monitor.reset();
    EXPECT_EQ(removals(), before + 1);
}

TEST_F(MicrophoneMonitorTest, AStopDuringTheRecordingStillPlaysWhatWasWritten) {
    startRecording();
    feed({0.1F, 0.2F});
    mainQueue.advance(1.0);
    monitor->stop();
    mainQueue.runReady();
    EXPECT_FALSE(audio.recordings.front()->isOpen);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
    runAll();
    mainQueue.advance(1.9);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
    EXPECT_THAT(audio.playbacks, IsEmpty());
    mainQueue.advance(0.1);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_THAT(audio.recordings.front()->samples, ElementsAre(0.1F, 0.2F));
    audio.finishPlaying(true);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::done);
}

TEST_F(MicrophoneMonitorTest, AStopLeavesThePlaybackAlone) {
    startPlaying();
    monitor->stop();
    runAll();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_TRUE(audio.playbacks.back()->isPlaying);
}

TEST_F(MicrophoneMonitorTest, AFailedWriteIsIgnored) {
    startRecording();
    audio.doWritesFail = true;
    feedLoud();
    EXPECT_EQ(monitor->level(), 1.0F);
    mainQueue.advance(3.0);
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::playing);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, ABufferWithoutFloatSamplesIsOfferedToTheRecordingAllTheSame) {
    startRecording();
    int writes = 0;
    audio.onWrite = [&] { ++writes; };
    audio.engine().feed({{1, 48000}, nullptr, 8});
    EXPECT_EQ(writes, 1);
}

TEST_F(MicrophoneMonitorTest, NothingHappensOnceTheMonitorIsGone) {
    startRecording();
    auto& engine = audio.engine();
    engine.feedSamples({0.5F});
    monitor.reset();
    EXPECT_FALSE(engine.exists);
    EXPECT_FALSE(audio.recordings.front()->isOpen);
    EXPECT_EQ(files.removedFiles.back(), echoFile);
    engine.feedSamples({0.5F});
    runAll();
    mainQueue.advance(10.0);
    EXPECT_THAT(audio.playbacks, IsEmpty());
}

TEST_F(MicrophoneMonitorTest, ASetUpThatWaitsGoesWithTheMonitor) {
    monitor->start();
    monitor.reset();
    EXPECT_FALSE(audio.engine().exists);
    runAll();
    EXPECT_THAT(audio.calls, ElementsAre("make engine"));
}

TEST_F(MicrophoneMonitorTest, BuffersMayComeFromAnotherThreadAllTheTime) {
    std::atomic<bool> isOver = false;
    start();
    std::mutex current;
    auto state = audio.engines.back();
    std::atomic<int> fed = 0;
    std::thread tap([&] {
        const std::vector<float> samples(1024, 0.01F);
        while (!isOver) {
            std::shared_ptr<TestSupport::FakeAudioEngineState> engine;
            {
                const std::scoped_lock lock(current);
                engine = state;
            }
            engine->feedSamples(samples);
            ++fed;
        }
    });
    const auto letSomeCome = [&] {
        const int before = fed;
        while (fed < before + 3) {
            mainQueue.runReady();
        }
        runAll();
    };
    for (int round = 0; round < 20; ++round) {
        letSomeCome();
        EXPECT_FLOAT_EQ(monitor->level(), 0.2F);
        EXPECT_EQ(monitor->status(), MicStatus::working);
        monitor->startEcho();
        letSomeCome();
        audio.changeConfiguration({1, 48000});
        letSomeCome();
        mainQueue.advance(3.0);
        while (monitor->echoPhase() != EchoPhase::playing) {
            mainQueue.runReady();
        }
        EXPECT_FALSE(audio.recordings.back()->isOpen);
        const auto& samples = audio.recordings.back()->samples;
        EXPECT_THAT(samples, Not(IsEmpty()));
        EXPECT_TRUE(
            std::all_of(samples.begin(), samples.end(), [](float sample) { return sample == 0.01F; }));
        EXPECT_EQ(samples.size() % 1024, 0U);
        audio.finishPlaying(true);
        monitor->stop();
        letSomeCome();
        start();
        const std::scoped_lock lock(current);
        state = audio.engines.back();
    }
    monitor.reset();
    isOver = true;
    tap.join();
}

} // namespace
