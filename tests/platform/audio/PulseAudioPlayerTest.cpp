#include "platform/linux/audio/PulseAudioServices.h"
#include "platform/qt/QtMainQueue.h"

#include "tests/support/EventLoop.h"
#include "tests/support/SoundWorld.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>

namespace {

using TestSupport::outputOf;
using TestSupport::SoundWorld;
using TestSupport::tone;

struct Listener : Platform::AudioPlayerDelegate {
    std::optional<bool> outcome;

    void audioPlayerDidFinishPlaying(Platform::AudioPlayer& /*player*/, bool successfully) override {
        EXPECT_FALSE(outcome);
        outcome = successfully;
    }
};

struct PulseAudioPlayerTest : testing::Test {
    SoundWorld sound;
    TestSupport::TemporaryFolder folder;
    QtPlatform::QtMainQueue mainQueue;
    LinuxPlatform::PulseAudioServices audio{mainQueue};
    Listener listener;
    std::unique_ptr<Platform::AudioPlayer> player;

    template <class Condition>
    static bool eventually(const Condition& condition) {
        return TestSupport::spinUntil(condition, std::chrono::seconds(20));
    }

    std::filesystem::path makeFile(double seconds) {
        auto path = folder.path() / "tone.caf";
        std::filesystem::remove(path);
        const Platform::AudioFormat format{1, 48000};
        const auto made = audio.openFileForWriting(path.string(), format);
        const auto samples = tone(440, 0.5, seconds);
        if (!samples.empty()) {
            EXPECT_TRUE(std::get<std::unique_ptr<Platform::AudioFile>>(made)->write(
                {format, samples.data(), samples.size()}));
        }
        return path;
    }

    void open(const std::filesystem::path& path) {
        listener.outcome.reset();
        auto made = audio.makePlayer(path.string());
        ASSERT_TRUE(std::holds_alternative<std::unique_ptr<Platform::AudioPlayer>>(made));
        player = std::move(std::get<std::unique_ptr<Platform::AudioPlayer>>(made));
        player->setDelegate(&listener);
        player->setVolume(1);
        player->prepareToPlay();
    }

    bool finishes() {
        return eventually([&] { return listener.outcome.has_value(); });
    }

    /// What the speakers play until the playback is over.
    std::vector<float> heard() {
        TestSupport::SpeakersEar ear(folder.path() / "heard.raw");
        player->play();
        EXPECT_TRUE(finishes());
        return ear.heard();
    }

    static std::string ourStream() {
        return outputOf("pactl list sink-inputs | awk '/^Sink Input/ {n = substr($3, 2)} /application.name = "
                        "\"Curtain\"/ {print n}'");
    }
};

/// The loudest sample of each tenth of a second in which there is sound from beginning to end.
std::vector<float> peaks(const std::vector<float>& samples) {
    const auto isLoud = [](float sample) { return std::abs(sample) > 1e-3F; };
    std::vector<float> result;
    for (auto at = std::find_if(samples.begin(), samples.end(), isLoud); samples.end() - at > 9600;
         at += 4800) {
        if (std::none_of(at + 4800, at + 9600, isLoud)) {
            break;
        }
        result.push_back(std::abs(*std::max_element(
            at, at + 4800, [](float one, float other) { return std::abs(one) < std::abs(other); })));
    }
    return result;
}

/// PulseAudio counts as heard what a sink has taken, and its virtual ones that take nothing back take sound
/// for so long ahead of the clock. Those of sound cards are asked for what they have not played yet.
std::chrono::milliseconds takenAhead() {
    return std::chrono::milliseconds(SoundWorld::isPipeWire() ? 0 : 50);
}

TEST_F(PulseAudioPlayerTest, PlaysTheWholeFileAndTellsWhenItHasBeenHeard) {
    open(makeFile(1));
    const auto start = std::chrono::steady_clock::now();
    player->play();
    ASSERT_TRUE(finishes());
    EXPECT_EQ(listener.outcome, true);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(1) - takenAhead());
    EXPECT_EQ(ourStream(), "");
}

TEST_F(PulseAudioPlayerTest, PlaysAtFullVolumeWhateverTheServerRemembers) {
    const auto path = makeFile(2);
    open(path);
    player->play();
    ASSERT_TRUE(eventually([] { return !ourStream().empty(); }));
    outputOf("pactl set-sink-input-volume " + ourStream().substr(0, ourStream().find('\n')) + " 5%");
    outputOf("pactl set-sink-input-mute " + ourStream().substr(0, ourStream().find('\n')) + " 1");
    ASSERT_TRUE(finishes());
    // A computer that is too busy loses sound on the way through the virtual devices.
    std::vector<float> loudness;
    for (int attempt = 0; attempt < 3; ++attempt) {
        open(path);
        loudness = peaks(heard());
        if (loudness.size() >= 18 &&
            std::all_of(loudness.begin(), loudness.end(), [](float peak) { return peak > 0.49F; })) {
            break;
        }
    }
    EXPECT_GE(loudness.size(), 18U);
    EXPECT_THAT(loudness, testing::Each(testing::FloatNear(0.5F, 0.01F)));
}

/// A PulseAudio whose streams turn the speakers up and down; PipeWire has no such volumes.
struct FlatVolumesTest : PulseAudioPlayerTest {
    std::filesystem::path configuration =
        std::filesystem::path(std::getenv("HOME")) / ".config/pulse/daemon.conf";

    void SetUp() override {
        TestSupport::writeFile(configuration, "flat-volumes = yes\n");
        restartServer();
        outputOf("pactl set-sink-volume speakers 30%");
        const TestSupport::ChildProcess loud({"pacat", "--volume=65536", "/dev/zero"});
        ASSERT_TRUE(eventually([] { return volumes("get-sink-volume speakers") == "100% 100% "; }))
            << "A loud stream turns the speakers up.";
    }
    void TearDown() override {
        if (std::filesystem::remove(configuration)) {
            restartServer();
        }
    }

    static void restartServer() {
        SoundWorld::killServer();
        SoundWorld::startServer();
    }

    static std::string volumes(const std::string& what) {
        return outputOf("pactl " + what + " | grep -o '[0-9]*%' | tr '\\n' ' '");
    }

    /// The speakers, while the sound is played and afterwards, and the last volume of the sound itself.
    void playAt(const std::string& speakers, const std::string& stream) {
        player->play();
        std::set<std::string> ofSpeakers;
        std::string ofStream;
        ASSERT_TRUE(eventually([&] {
            ofSpeakers.insert(volumes("get-sink-volume speakers"));
            const auto now = volumes("list sink-inputs");
            ofStream = now.empty() ? ofStream : now;
            return listener.outcome.has_value();
        }));
        EXPECT_EQ(listener.outcome, true);
        EXPECT_THAT(ofSpeakers, testing::ElementsAre(speakers));
        EXPECT_EQ(ofStream, stream);
    }
};

TEST_F(FlatVolumesTest, TheSpeakersStayAsTheyAre) {
    outputOf("pactl set-sink-volume speakers 30%");
    open(makeFile(1));
    playAt("30% 30% ", "30% 30% ");
}

TEST_F(FlatVolumesTest, ASoundThatTheServerRemembersAsFaintIsAsLoudAsTheSpeakers) {
    const auto path = makeFile(2);
    outputOf("pactl set-sink-volume speakers 30%");
    open(path);
    player->play();
    ASSERT_TRUE(eventually([] { return !ourStream().empty(); }));
    outputOf("pactl set-sink-input-volume " + ourStream().substr(0, ourStream().find('\n')) + " 5%");
    ASSERT_TRUE(finishes());
    outputOf("pactl set-sink-volume speakers 30%");
    open(path);
    playAt("30% 30% ", "30% 30% ");
}

TEST_F(FlatVolumesTest, SpeakersOutOfBalanceStaySo) {
    outputOf("pactl set-sink-volume speakers 50% 20%");
    open(makeFile(1));
    playAt("50% 20% ", "50% 20% ");
}

TEST_F(PulseAudioPlayerTest, AVeryShortFileAndAnEmptyOneFinishToo) {
    for (const auto seconds : {0.01, 0.0}) {
        open(makeFile(seconds));
        player->play();
        ASSERT_TRUE(finishes());
        EXPECT_EQ(listener.outcome, true);
    }
}

TEST_F(PulseAudioPlayerTest, APlayerThatIsGoneTellsNobody) {
    open(makeFile(1));
    player->play();
    ASSERT_TRUE(eventually([] { return !ourStream().empty(); }));
    player.reset();
    EXPECT_TRUE(eventually([] { return ourStream().empty(); }));
    EXPECT_EQ(listener.outcome, std::nullopt);
}

TEST_F(PulseAudioPlayerTest, WithoutAServerThePlaybackFails) {
    open(makeFile(1));
    player.reset();
    setenv("PULSE_SERVER", "unix:/nowhere", 1);
    open(folder.path() / "tone.caf");
    player->play();
    ASSERT_TRUE(finishes());
    EXPECT_EQ(listener.outcome, false);
    unsetenv("PULSE_SERVER");
}

TEST_F(PulseAudioPlayerTest, AServerThatFreezesEndsThePlaybackInTheEnd) {
    open(makeFile(0.5));
    SoundWorld::freeze();
    player->play();
    ASSERT_TRUE(finishes());
    EXPECT_EQ(listener.outcome, false);
}

TEST_F(PulseAudioPlayerTest, WhatIsNoSoundFileIsRefused) {
    TestSupport::writeFile(folder.path() / "noise", std::string(5000, 'x'));
    std::filesystem::create_symlink(makeFile(1), folder.path() / "link");
    for (const auto* name : {"noise", "missing", "link", "."}) {
        const auto made = audio.makePlayer((folder.path() / name).string());
        ASSERT_TRUE(std::holds_alternative<Platform::AudioError>(made)) << name;
        EXPECT_THAT(std::get<Platform::AudioError>(made).localizedDescription, testing::HasSubstr(name));
    }
}

} // namespace
