#include "platform/linux/audio/PulseAudioServices.h"
#include "platform/qt/QtMainQueue.h"

#include "tests/support/SoundWorld.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <mutex>
#include <thread>

namespace {

using TestSupport::SoundWorld;
using TestSupport::tone;
using TestSupport::waitUntil;

struct PulseAudioEngineTest : testing::Test {
    SoundWorld sound;
    QtPlatform::QtMainQueue mainQueue;
    // For a machine that stalls.
    LinuxPlatform::PulseAudioServices audio{mainQueue, std::chrono::seconds(20)};
    std::shared_ptr<Platform::AudioEngine> engine = audio.makeEngine();

    std::mutex mutex;
    std::vector<float> samples;
    std::vector<std::size_t> lengths;
    std::vector<std::thread::id> threads;

    void installTap() {
        engine->inputNode().installTap(
            1024, engine->inputNode().inputFormat(), [this](const Platform::AudioPCMBuffer& buffer) {
                const std::scoped_lock lock(mutex);
                samples.insert(samples.end(), buffer.floatChannelData,
                               buffer.floatChannelData + buffer.frameLength * buffer.format.channelCount);
                lengths.push_back(buffer.frameLength);
                threads.push_back(std::this_thread::get_id());
            });
    }

    std::size_t count() {
        const std::scoped_lock lock(mutex);
        return samples.size();
    }
};

TEST_F(PulseAudioEngineTest, ReportsTheDevicesOwnFormat) {
    EXPECT_EQ(engine->inputNode().inputFormat(), (Platform::AudioFormat{1, 48000}));
    sound.addMicrophone("other", 44100);
    SoundWorld::makeDefault("other");
    // PipeWire 0.3.65 may not tell a connection that records nothing, so ask over a new one.
    engine.reset();
    engine = audio.makeEngine();
    EXPECT_EQ(engine->inputNode().inputFormat(), (Platform::AudioFormat{2, 44100}));
}

TEST_F(PulseAudioEngineTest, HearsNothingBeforeItIsStarted) {
    installTap();
    EXPECT_FALSE(engine->isRunning());
    EXPECT_FALSE(SoundWorld::hasOurRecording());
    EXPECT_FALSE(engine->start());
    EXPECT_TRUE(engine->isRunning());
    EXPECT_TRUE(SoundWorld::hasOurRecording());
    EXPECT_FALSE(engine->start());
    EXPECT_TRUE(waitUntil([&] { return count() > 0; }));
    engine->stop();
    EXPECT_TRUE(waitUntil([&] { return !engine->isRunning(); }));
    EXPECT_TRUE(waitUntil([] { return !SoundWorld::hasOurRecording(); }));
}

TEST_F(PulseAudioEngineTest, DeliversWholeBuffersOnOneThreadOfItsOwnWithoutLoss) {
    sound.feed(tone(440, 0.5, 60));
    installTap();
    ASSERT_FALSE(engine->start());
    // In a tone each sample follows from the two before it. A computer that is too busy loses sound in the
    // virtual devices, so a stretch of a second without a flaw is waited for.
    const auto follows = [this](std::size_t index) {
        const double step = 2 * std::cos(2 * std::numbers::pi * 440 / 48000);
        return std::abs(samples[index] - step * samples[index - 1] + samples[index - 2]) < 1e-4 &&
               (samples[index] != 0 || samples[index - 1] != 0);
    };
    std::size_t next = 2;
    std::size_t run = 0;
    EXPECT_TRUE(waitUntil([&] {
        const std::scoped_lock lock(mutex);
        for (; next < samples.size() && run < 48000; ++next) {
            run = follows(next) ? run + 1 : 0;
        }
        return run == 48000;
    }));
    const std::scoped_lock lock(mutex);
    EXPECT_THAT(lengths, testing::Each(1024U));
    EXPECT_THAT(threads, testing::Each(threads.front()));
    EXPECT_NE(threads.front(), std::this_thread::get_id());
}

TEST_F(PulseAudioEngineTest, NothingComesOnceTheTapIsRemoved) {
    installTap();
    ASSERT_FALSE(engine->start());
    ASSERT_TRUE(waitUntil([&] { return count() > 0; }));
    engine->inputNode().removeTap();
    const auto before = count();
    installTap();
    ASSERT_TRUE(waitUntil([&] { return count() > before; }));
    engine.reset();
    const auto atTheEnd = count();
    EXPECT_TRUE(waitUntil([] { return !SoundWorld::hasOurRecording(); }));
    EXPECT_EQ(count(), atTheEnd);
}

TEST_F(PulseAudioEngineTest, TellsExactlyWhenTheDeviceOrItsFormatChanges) {
    std::atomic<int> changes = 0;
    const auto observer = engine->addConfigurationChangeObserver([&] { ++changes; });
    installTap();
    ASSERT_FALSE(engine->start());
    TestSupport::outputOf("pactl set-source-volume microphone 50%");
    TestSupport::outputOf("pactl set-source-mute microphone 1");
    sound.addMicrophone("other", 44100);
    EXPECT_TRUE(engine->isRunning());
    SoundWorld::makeDefault("other");
    EXPECT_TRUE(waitUntil([&] { return changes == 1; }));
    EXPECT_TRUE(waitUntil([&] { return !engine->isRunning(); }));
    EXPECT_FALSE(engine->start());
    SoundWorld::makeDefault("microphone");
    EXPECT_TRUE(waitUntil([&] { return changes == 2; }));
    EXPECT_TRUE(waitUntil([&] { return !engine->isRunning(); }));
    EXPECT_FALSE(engine->start());
    SoundWorld::unplug();
    EXPECT_TRUE(waitUntil([&] { return changes >= 3; }));
    EXPECT_TRUE(waitUntil([&] { return !engine->isRunning(); }));
}

TEST_F(PulseAudioEngineTest, NobodyIsToldAfterTheirSubscriptionHasEnded) {
    std::atomic<int> changes = 0;
    std::atomic<int> others = 0;
    auto observer = engine->addConfigurationChangeObserver([&] { ++changes; });
    const auto other = engine->addConfigurationChangeObserver([&] { ++others; });
    engine->inputNode().inputFormat();
    observer = {};
    SoundWorld::unplug();
    EXPECT_TRUE(waitUntil([&] { return others > 0; }));
    EXPECT_EQ(changes, 0);
}

TEST_F(PulseAudioEngineTest, DoesNotStartWithoutAMicrophone) {
    SoundWorld::unplug();
    ASSERT_TRUE(waitUntil([&] { return engine->inputNode().inputFormat().channelCount == 0; }));
    const auto error = engine->start();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->localizedDescription, "there is no microphone");
}

TEST_F(PulseAudioEngineTest, StartsAndStopsManyTimes) {
    for (int round = 0; round < 20; ++round) {
        installTap();
        const auto error = engine->start();
        ASSERT_FALSE(error) << error->localizedDescription << " in round " << round;
        engine->inputNode().removeTap();
        engine->stop();
        engine = audio.makeEngine();
    }
    EXPECT_TRUE(waitUntil([] { return !SoundWorld::hasOurRecording(); }));
}

} // namespace
