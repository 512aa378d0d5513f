#include "tests/platform/audio/MicrophoneCheck.h"
#include "tests/platform/audio/ScriptedHeadset.h"
#include "tests/platform/system/FileSizeLimit.h"
#include "tests/support/RunningTime.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <sys/stat.h>

namespace {

using Curtain::EchoPhase;
using Curtain::MicStatus;
using testing::IsEmpty;
using TestSupport::SoundWorld;
using TestSupport::tone;

/// From the stop until the server shows no recording.
constexpr std::chrono::milliseconds timeToLetGo{100};

struct MicrophoneCheckTest : TestSupport::MicrophoneCheck {};

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

/// Writes down what the server tells, since a question each time would take longer than what is measured.
class ServerEvents {
public:
    explicit ServerEvents(const std::filesystem::path& file)
        : file_(file),
          listener_({"sh", "-c", "exec pactl subscribe >" + file.string()}) {
        // Everybody who comes and goes is told of.
        TestSupport::waitUntil([this] {
            TestSupport::outputOf("pactl info");
            return !TestSupport::readFile(file_).empty();
        });
    }

    int endedRecordings() const { return count("'remove' on source-output"); }
    int newClients() const { return count("'new' on client"); }

private:
    int count(std::string_view event) const {
        const auto events = TestSupport::readFile(file_);
        int count = 0;
        for (auto place = events.find(event); place != std::string::npos;
             place = events.find(event, place + 1)) {
            ++count;
        }
        return count;
    }

    std::filesystem::path file_;
    TestSupport::ChildProcess listener_;
};

TEST_F(MicrophoneCheckTest, NothingListensUnlessAsked) {
    EXPECT_FALSE(SoundWorld::hasOurRecording());
    const ServerEvents events(folder.path() / "events");
    // A busy computer may take long for anything, but not every time.
    constexpr int attempts = 10;
    auto fastest = std::chrono::steady_clock::duration::max();
    for (int attempt = 0; attempt < attempts && fastest >= timeToLetGo; ++attempt) {
        startMetering();
        ASSERT_TRUE(eventually(SoundWorld::hasOurRecording));
        const auto endedBefore = events.endedRecordings();
        const auto begin = std::chrono::steady_clock::now();
        monitor->stop();
        ASSERT_TRUE(eventually([&] { return events.endedRecordings() > endedBefore; }));
        fastest = std::min(fastest, std::chrono::steady_clock::now() - begin);
        EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
    }
    EXPECT_LT(fastest, timeToLetGo);
}

TEST_F(MicrophoneCheckTest, TheMeterConnectsOnce) {
    startMetering();
    const ServerEvents events(folder.path() / "events");
    ASSERT_TRUE(levelBecomes(0, 0));
    const auto before = events.newClients();
    EXPECT_FALSE(
        TestSupport::spinUntil([&] { return events.newClients() > before; }, std::chrono::seconds(5)));
}

TEST_F(MicrophoneCheckTest, AMonitorThatSomebodyHasChosenIsTheMicrophone) {
    SoundWorld::makeDefault("speakers.monitor");
    sound.feed(tone(440, 0.01, 60), "speakers");
    EXPECT_TRUE(eventually([&] { return audio.hasInputDevice(); }));
    startMetering();
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
    // Now it only stands for what is missing.
    SoundWorld::unplug();
    EXPECT_TRUE(levelBecomes(0, 0));
    EXPECT_FALSE(audio.hasInputDevice());
    monitor->stop();
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
}

/// Under PulseAudio a headset that plays music has no microphone.
using HeadsetTest = TestSupport::MicrophoneCheck;
using ManyMicrophonesTest = TestSupport::MicrophoneCheck;

TEST_F(HeadsetTest, IsNotSwitchedForTheMeter) {
    sound.addHeadset("headset");
    SoundWorld::makeDefault("headset");
    sound.feed(tone(440, 0.5, 60));
    const ServerEvents events(folder.path() / "events");
    startMetering();
    EXPECT_TRUE(levelBecomes(1, 1));
    EXPECT_EQ(SoundWorld::ourRecordings(), 1);
    EXPECT_EQ(events.endedRecordings(), 0) << "There was never a stream from the headset.";
    EXPECT_THAT(monitor->deviceName(), testing::HasSubstr("icrophone"));
}

TEST_F(HeadsetTest, IsNotSwitchedWhenItBecomesTheDefaultMicrophoneOfARunningMeter) {
    using TestSupport::ScriptedHeadset;
    sound.feed(tone(440, 0.5, 60));
    startMetering();
    EXPECT_TRUE(levelBecomes(1, 1));
    const ScriptedHeadset headset;
    ASSERT_TRUE(eventually([&] { return headset.id() != ScriptedHeadset::none; }));
    sound.addHeadset(headset.id());
    // The session manager thinks for half a second.
    EXPECT_FALSE(TestSupport::spinUntil([&] { return headset.switches() > 0; }, std::chrono::seconds(1)));
    EXPECT_EQ(SoundWorld::ourRecordings(), 1);
    EXPECT_THAT(monitor->deviceName(), testing::HasSubstr("icrophone"));
    sound.feed(tone(440, 0.01, 60));
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
}

TEST_F(HeadsetTest, IsSwitchedForACallAndNotForTheMeter) {
    using TestSupport::ScriptedHeadset;
    const ScriptedHeadset headset;
    ASSERT_TRUE(eventually([&] { return headset.id() != ScriptedHeadset::none; }));
    sound.addHeadset(headset.id());
    sound.feed(tone(440, 0.5, 60));
    startMetering();
    EXPECT_TRUE(levelBecomes(1, 1));
    EXPECT_THAT(monitor->deviceName(), testing::HasSubstr("icrophone"));
    // The session manager thinks for half a second.
    EXPECT_FALSE(TestSupport::spinUntil([&] { return headset.switches() > 0; }, std::chrono::seconds(1)));

    // In one channel: WirePlumber 0.5 forgets the call over the link of the second one.
    const TestSupport::ChildProcess call({"pw-record", "--media-role=Communication", "--channels=1",
                                          "--target=bluez_input.scripted", folder.path() / "call.wav"});
    ASSERT_TRUE(eventually([&] { return headset.profile() == ScriptedHeadset::call; }));
    EXPECT_EQ(headset.switches(), 1);
    EXPECT_TRUE(eventually([&] { return monitor->deviceName() == "Headset"; })) << "what the call hears";
    EXPECT_TRUE(levelBecomes(0, 0));
}

TEST_F(MicrophoneCheckTest, AStreamThatIsGivenUpWhileTheServerMakesItDoesNotStay) {
    const auto connection = audio.prepare();
    const auto engine = audio.makeEngine();
    ASSERT_TRUE(eventually([&] { return engine->inputNode().inputFormat().channelCount > 0; }));
    // Another test's may still be on its way out.
    ASSERT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
    const ServerEvents events(folder.path() / "events");
    SoundWorld::freeze();
    EXPECT_TRUE(engine->start());
    SoundWorld::thaw();
    // It was made, then. PulseAudio leaves its beginning out where it has not told of that before the end.
    ASSERT_TRUE(eventually([&] { return events.endedRecordings() > 0; }));
    EXPECT_FALSE(SoundWorld::hasOurRecording());
    EXPECT_TRUE(SoundWorld::hasOurClient()) << "The stream did not just end with its connection.";
}

TEST_F(MicrophoneCheckTest, TheMetersStreamIsNoCall) {
    startMetering();
    ASSERT_TRUE(eventually(SoundWorld::hasOurRecording));
    EXPECT_THAT(TestSupport::outputOf("pactl list source-outputs"),
                testing::HasSubstr("media.role = \"test\""));
}

TEST_F(MicrophoneCheckTest, APreparationConnectsUntilItEnds) {
    // Another test's may still be on its way out.
    ASSERT_TRUE(eventually([] { return !SoundWorld::hasOurClient(); }));
    auto preparation = audio.prepare();
    EXPECT_TRUE(eventually(SoundWorld::hasOurClient));
    EXPECT_TRUE(eventually([&] { return audio.hasInputDevice(); }));
    EXPECT_TRUE(SoundWorld::hasOurClient());
    preparation = {};
    EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurClient(); }));
}

TEST_F(MicrophoneCheckTest, WithoutAMicrophoneThereIsNoInputDevice) {
    SoundWorld::unplug();
    EXPECT_FALSE(audio.hasInputDevice());
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    SoundWorld::plugIn();
    EXPECT_TRUE(eventually([&] { return audio.hasInputDevice(); }));
    sound.feed(tone(440, 0.5, 60));
    monitor->start();
    EXPECT_TRUE(becomes(MicStatus::working));
}

TEST_F(MicrophoneCheckTest, AMicrophoneThatIsPluggedInWhileSomebodyLooksIsHeard) {
    SoundWorld::unplug();
    monitor->start();
    ASSERT_TRUE(becomes(MicStatus::noInputDevice));
    SoundWorld::plugIn();
    sound.feed(tone(440, 0.5, 60));
    EXPECT_TRUE(becomes(MicStatus::working));
    sound.silence();
    SoundWorld::unplug();
    EXPECT_TRUE(becomes(MicStatus::noInputDevice));
    EXPECT_TRUE(levelBecomes(0, 0));
    SoundWorld::plugIn();
    EXPECT_TRUE(becomes(MicStatus::silent));
}

TEST_F(MicrophoneCheckTest, NobodyLooksForMicrophonesOnceThePopoverIsShut) {
    SoundWorld::unplug();
    monitor->start();
    ASSERT_TRUE(becomes(MicStatus::noInputDevice));
    EXPECT_TRUE(eventually([] { return SoundWorld::hasOurClient(); }));
    monitor->stop();
    EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurClient(); }));
}

TEST_F(MicrophoneCheckTest, AMicrophoneThatIsUnpluggedIsNotReplacedByTheSpeakers) {
    sound.feed(tone(440, 0.01, 60));
    startMetering();
    ASSERT_TRUE(levelBecomes(0.13F, 0.15F));
    sound.feed(tone(440, 0.5, 60), "speakers");
    SoundWorld::unplug();
    ASSERT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
    EXPECT_LT(monitor->level(), 0.5F);
    sound.feed(tone(440, 0.5, 60));
    SoundWorld::plugIn();
    EXPECT_TRUE(levelBecomes(1, 1));
    EXPECT_TRUE(becomes(MicStatus::working));
}

/// Two channels, the right one so many times as loud.
std::vector<float> leftAndRight(const std::vector<float>& left, float factor) {
    std::vector<float> both;
    for (const auto sample : left) {
        both.push_back(sample);
        both.push_back(factor * sample);
    }
    return both;
}

TEST_F(MicrophoneCheckTest, TheMeterFollowsTheDefaultMicrophoneAndItsFormat) {
    sound.addMicrophone("other", 44100);
    startMetering();
    ASSERT_TRUE(levelBecomes(0, 0));
    // Only the left channel counts.
    sound.feed(leftAndRight(tone(440, 0.01, 60, 44100), 50), "other_feed", 44100, 2);
    SoundWorld::makeDefault("other");
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
    SoundWorld::makeDefault("microphone");
    EXPECT_TRUE(levelBecomes(0, 0));
}

TEST_F(MicrophoneCheckTest, TheMeterFollowsAMicrophoneThatReturnsInAnotherFormat) {
    sound.feed(tone(440, 0.01, 60));
    startMetering();
    ASSERT_TRUE(levelBecomes(0.13F, 0.15F));
    SoundWorld::unplug();
    SoundWorld::plugIn("channels=2 channel_map=front-left,front-right remix=yes");
    sound.feed(tone(440, 0.02, 60));
    EXPECT_TRUE(levelBecomes(0.27F, 0.30F));
    // The next test wants the usual one back.
    SoundWorld::unplug();
}

TEST_F(MicrophoneCheckTest, AMicrophoneWithEightChannelsAt192KilohertzIsHeard) {
    sound.addMicrophone("studio", 192000, 8);
    std::vector<float> eight;
    for (const auto sample : tone(440, 0.01, 20, 192000)) {
        eight.push_back(sample);
        eight.insert(eight.end(), 7, 0.5F);
    }
    sound.feed(eight, "studio_feed", 192000, 8);
    SoundWorld::makeDefault("studio");
    startMetering();
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
}

TEST_F(ManyMicrophonesTest, TheMeterFollowsTheDefaultOneAndStopsAtOnce) {
    const auto count = sound.addMicrophones();
    ASSERT_GT(count, 0);
    sound.feed(tone(440, 0.01, 60));
    startMetering();
    ASSERT_TRUE(levelBecomes(0.13F, 0.15F));
    SoundWorld::makeDefault("extra" + std::to_string(count - 1));
    EXPECT_TRUE(levelBecomes(0, 0));
    SoundWorld::makeDefault("microphone");
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
    const auto stop = [&] {
        monitor->stop();
        EXPECT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
    };
    EXPECT_LT(TestSupport::runningTimeOf(stop), std::chrono::seconds(1));
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

/// A voice, with a faint tone under it, so that its pauses are not silence.
std::vector<float> speech(const std::filesystem::path& folder) {
    const auto wave = (folder / "speech.wav").string();
    const auto raw = (folder / "speech.raw").string();
    TestSupport::outputOf(
        "espeak-ng -w " + wave +
        " 'Good morning. Can you hear me? I am trying my microphone before the call begins, "
        "so that nobody has to ask whether I am still there. One, two, three, four, five, "
        "six, seven, eight, nine, ten, eleven, twelve, thirteen, fourteen, fifteen.'");
    TestSupport::outputOf("ffmpeg -y -i " + wave + " -f f32le -ac 1 -ar 48000 " + raw);
    auto samples = TestSupport::readSamples(raw);
    const auto floor = tone(200, 0.005, 60);
    for (std::size_t frame = 0; frame < samples.size(); ++frame) {
        samples[frame] += floor[frame];
    }
    return samples;
}

/// Without the silence around it.
std::vector<float> trimmed(const std::vector<float>& samples) {
    const auto isLoud = [](float sample) { return std::abs(sample) > 1e-4F; };
    const auto first = std::find_if(samples.begin(), samples.end(), isLoud);
    const auto last = std::find_if(samples.rbegin(), std::make_reverse_iterator(first), isLoud).base();
    return {first, last};
}

double correlation(const float* one, const float* other, std::size_t count) {
    double product = 0;
    double oneSquare = 0;
    double otherSquare = 0;
    for (std::size_t index = 0; index < count; ++index) {
        product += double{one[index]} * other[index];
        oneSquare += double{one[index]} * one[index];
        otherSquare += double{other[index]} * other[index];
    }
    return product / std::max(std::sqrt(oneSquare * otherSquare), 1e-9);
}

std::vector<float> coarse(const std::vector<float>& samples, std::size_t factor) {
    std::vector<float> result(samples.size() / factor);
    for (std::size_t index = 0; index < result.size(); ++index) {
        for (std::size_t sample = 0; sample < factor; ++sample) {
            result[index] += samples[index * factor + sample];
        }
    }
    return result;
}

/// How alike the shorter sound and some part of the longer one are; 1 for the same.
double likeness(const std::vector<float>& whole, const std::vector<float>& part) {
    constexpr std::size_t factor = 48;
    const auto wholeCoarse = coarse(whole, factor);
    const auto partCoarse = coarse(part, factor);
    if (part.empty() || partCoarse.size() + 1 > wholeCoarse.size()) {
        return 0;
    }
    std::size_t best = 0;
    double bestCoarse = -1;
    for (std::size_t offset = 0; offset + partCoarse.size() <= wholeCoarse.size(); ++offset) {
        const auto value = correlation(&wholeCoarse[offset], partCoarse.data(), partCoarse.size());
        if (value > bestCoarse) {
            bestCoarse = value;
            best = offset * factor;
        }
    }
    double result = -1;
    const auto last = std::min(best + 2 * factor, whole.size() - part.size());
    for (auto offset = best - std::min(best, 2 * factor); offset <= last; ++offset) {
        result = std::max(result, correlation(&whole[offset], part.data(), part.size()));
    }
    return result;
}

double rootMeanSquare(const std::vector<float>& samples) {
    double sum = 0;
    for (const auto sample : samples) {
        sum += double{sample} * sample;
    }
    return std::sqrt(sum / static_cast<double>(std::max<std::size_t>(samples.size(), 1)));
}

/// A computer that is too busy leaves gaps in the sound, but makes none of it louder or quieter.
float loudest(const std::vector<float>& samples) {
    float result = 0;
    for (const auto sample : samples) {
        result = std::max(result, std::abs(sample));
    }
    return result;
}

struct EchoTest : TestSupport::MicrophoneCheck {
    struct Echo {
        std::vector<float> recorded;
        std::vector<float> heard;
        mode_t mode = 0;
    };

    /// What was in the file when its playback began.
    std::vector<float> recorded;
    EchoPhase phase = EchoPhase::idle;

    EchoTest() {
        QObject::connect(&*monitor, &Curtain::MicrophoneMonitor::changed, [this] {
            if (std::exchange(phase, monitor->echoPhase()) != EchoPhase::playing &&
                phase == EchoPhase::playing) {
                recorded = readRecording();
            }
        });
    }

    /// Ends the recording, which is held, some tenths of a second later.
    void recordOnAndEnd() {
        const auto before = recordedBytes();
        EXPECT_TRUE(eventually([&] { return recordedBytes() > before + 100'000; }));
        recordingQueue.goOn();
    }

    /// One whole echo test.
    Echo echo() {
        Echo result;
        TestSupport::SpeakersEar ear(folder.path() / "heard.raw");
        monitor->startEcho();
        EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
        struct stat status {};
        EXPECT_EQ(stat(recording().c_str(), &status), 0);
        result.mode = status.st_mode & 07777U;
        EXPECT_TRUE(becomes(EchoPhase::done));
        result.recorded = recorded;
        result.heard = trimmed(ear.heard());
        return result;
    }

    std::vector<float> readRecording() const {
        SF_INFO info{};
        auto* const file = sf_open(recording().c_str(), SFM_READ, &info);
        if (file == nullptr) {
            return {};
        }
        EXPECT_EQ(info.format & SF_FORMAT_TYPEMASK, SF_FORMAT_CAF);
        EXPECT_EQ(info.format & SF_FORMAT_SUBMASK, SF_FORMAT_FLOAT);
        std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
        sf_readf_float(file, samples.data(), info.frames);
        sf_close(file);
        return samples;
    }
};

TEST_F(EchoTest, WhatWasSpokenIsHeard) {
    const auto spoken = speech(folder.path());
    ASSERT_GT(spoken.size(), std::size_t{10} * 48000);
    constexpr double seconds = 3.0;
    // A computer that is too busy loses sound on the way through the virtual devices.
    constexpr int attempts = 5;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        // Of an earlier attempt nothing must be heard any more.
        sound.silence();
        startMetering();
        ASSERT_TRUE(levelBecomes(0, 0));
        sound.feed(spoken);
        ASSERT_TRUE(levelBecomes(0.5F, 1));
        const auto result = echo();
        EXPECT_EQ(result.mode, 0600U);
        EXPECT_FALSE(std::filesystem::exists(recording()));
        const auto heardSeconds = static_cast<double>(result.heard.size()) / 48000;
        const auto likenessOfRecording = likeness(spoken, result.recorded);
        const auto likenessOfHeard = likeness(spoken, result.heard);
        const auto loudness = rootMeanSquare(result.heard) / rootMeanSquare(result.recorded);
        std::printf("recorded %.3f s, heard %.3f s, recorded is like spoken %.4f, heard is like spoken %.4f, "
                    "loudness "
                    "%.3f\n",
                    static_cast<double>(result.recorded.size()) / 48000, heardSeconds, likenessOfRecording,
                    likenessOfHeard, loudness);
        const bool isGood = likenessOfHeard > 0.95 && likenessOfRecording > 0.95 &&
                            std::abs(heardSeconds - seconds) < 0.02 * seconds &&
                            std::abs(loudness - 1) < 0.05;
        if (isGood || attempt == attempts) {
            EXPECT_TRUE(isGood);
            break;
        }
    }
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(EchoTest, AStopWhileRecordingPlaysWhatThereIs) {
    ASSERT_NO_FATAL_FAILURE(startRecordingATone());
    monitor->stop();
    EXPECT_TRUE(becomes(EchoPhase::done));
    EXPECT_NEAR(loudest(recorded), 0.5, 0.01);
    EXPECT_LT(recorded.size(), std::size_t{3} * 48000);
    EXPECT_FALSE(std::filesystem::exists(recording()));
}

TEST_F(EchoTest, AnotherMicrophoneInTheMiddleIsRecordedFurtherInTheSameFormat) {
    sound.addMicrophone("other", 44100);
    recordingQueue.hold();
    ASSERT_NO_FATAL_FAILURE(startRecordingATone());
    // Only the left channel counts.
    sound.feed(leftAndRight(tone(440, 0.01, 60, 44100), 50), "other_feed", 44100, 2);
    SoundWorld::makeDefault("other");
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
    recordOnAndEnd();
    EXPECT_TRUE(becomes(EchoPhase::done));
    EXPECT_NEAR(loudest(recorded), 0.5, 0.01);
    ASSERT_GT(recorded.size(), 4800U);
    EXPECT_NEAR(loudest({recorded.end() - 4800, recorded.end()}), 0.01, 0.0005);
}

TEST_F(EchoTest, AMonoMicrophoneInTheMiddleOfAStereoRecordingIsAsLoud) {
    sound.addMicrophone("other", 44100);
    SoundWorld::makeDefault("other");
    sound.feed(leftAndRight(tone(440, 0.25, 60, 44100), 0), "other_feed", 44100, 2);
    startMetering();
    ASSERT_TRUE(levelBecomes(1, 1));
    recordingQueue.hold();
    monitor->startEcho();
    ASSERT_TRUE(eventually([&] { return recordedBytes() > 20000; }));
    SoundWorld::makeDefault("microphone");
    sound.feed(tone(440, 0.01, 60));
    EXPECT_TRUE(levelBecomes(0.13F, 0.15F));
    recordOnAndEnd();
    EXPECT_TRUE(becomes(EchoPhase::done));
    ASSERT_GT(recorded.size(), 4800U);
    EXPECT_NEAR(loudest({recorded.end() - 4800, recorded.end()}), 0.01, 0.0005);
}

TEST_F(EchoTest, AMicrophoneThatComesBackInTheMiddleIsRecordedFurther) {
    ASSERT_NO_FATAL_FAILURE(startRecordingATone());
    SoundWorld::unplug();
    ASSERT_TRUE(eventually([] { return !SoundWorld::hasOurRecording(); }));
    const auto before = recordedBytes();
    SoundWorld::plugIn();
    // The three seconds may be over first, on a busy computer.
    EXPECT_TRUE(
        eventually([&] { return monitor->echoPhase() != EchoPhase::recording || recordedBytes() > before; }));
    EXPECT_TRUE(becomes(EchoPhase::done));
    EXPECT_NEAR(loudest(recorded), 0.5, 0.01);
}

TEST_F(EchoTest, AFullDiskPlaysWhatThereIs) {
    sound.feed(tone(440, 0.5, 60));
    startMetering();
    ASSERT_TRUE(levelBecomes(1, 1));
    {
        const TestSupport::FileSizeLimit limit(100'000);
        monitor->startEcho();
        ASSERT_TRUE(eventually([&] { return monitor->echoPhase() != EchoPhase::recording; }));
    }
    EXPECT_TRUE(becomes(EchoPhase::done));
    EXPECT_NEAR(loudest(recorded), 0.5, 0.01);
    EXPECT_GT(recorded.size(), 20'000U);
    EXPECT_LE(recorded.size() * sizeof(float), 100'000U);
    EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(EchoTest, ALinkThatSomebodyPlantedIsNotFollowed) {
    const auto victim = folder.path() / "victim";
    TestSupport::writeFile(victim, "precious");
    startMetering();
    std::filesystem::create_symlink(victim, recording());
    monitor->startEcho();
    EXPECT_EQ(monitor->echoPhase(), EchoPhase::recording);
    EXPECT_FALSE(std::filesystem::is_symlink(recording()));
    EXPECT_EQ(TestSupport::readFile(victim), "precious");
}

TEST_F(EchoTest, AFolderThatCannotBeWrittenToMeansNoEcho) {
    for (const auto* place : {"/proc", "/nowhere/at/all"}) {
        folders.temporaryFolder = place;
        log.lines.clear();
        makeMonitor();
        startMetering();
        monitor->startEcho();
        EXPECT_EQ(monitor->echoPhase(), EchoPhase::idle);
        ASSERT_THAT(log.lines, testing::SizeIs(1));
        EXPECT_THAT(log.lines.front(), testing::StartsWith("Curtain echo: error al crear archivo: "));
    }
}

TEST_F(EchoTest, ARecordingLeftByACrashIsGoneAtTheNextStart) {
    TestSupport::writeFile(recording(), "left behind");
    makeMonitor();
    EXPECT_FALSE(std::filesystem::exists(recording()));
}

TEST_F(EchoTest, TheEndOfTheProgramTakesTheRecordingAlong) {
    startMetering();
    monitor->startEcho();
    ASSERT_TRUE(std::filesystem::exists(recording()));
    monitor.reset();
    EXPECT_FALSE(std::filesystem::exists(recording()));
}

} // namespace
