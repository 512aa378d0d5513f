#include "platform/linux/soundlibrary/LazySound.h"
#include "platform/linux/soundlibrary/MissingSound.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using LinuxPlatform::LazySound;
using LinuxPlatform::SoundToolkit;
using testing::ElementsAre;
using testing::IsEmpty;

/// Writes down what it is asked.
class RecordingToolkit : public SoundToolkit {
public:
    explicit RecordingToolkit(std::vector<std::string>& calls) : calls_(calls) {
        calls_.emplace_back("made");
    }

    Platform::Subscription prepare() override {
        calls_.emplace_back("prepare");
        return {};
    }
    bool hasInputDevice() override {
        calls_.emplace_back("has input device");
        return true;
    }
    Platform::Subscription observeInputDevice(std::function<void(bool isThere)> observer) override {
        calls_.emplace_back("observe");
        observer(true);
        return {};
    }
    std::shared_ptr<Platform::AudioEngine> makeEngine() override {
        calls_.emplace_back("engine");
        return nullptr;
    }
    std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
    openFileForWriting(const std::string& path, const Platform::AudioFormat& /*settings*/) override {
        calls_.emplace_back("write " + path);
        return Platform::AudioError{};
    }
    std::variant<std::unique_ptr<Platform::AudioPlayer>, Platform::AudioError>
    makePlayer(const std::string& path) override {
        calls_.emplace_back("play " + path);
        return Platform::AudioError{};
    }
    void setSuspended(bool isSuspended) override { calls_.emplace_back(isSuspended ? "asleep" : "awake"); }

private:
    std::vector<std::string>& calls_;
};

struct LazySoundTest : testing::Test {
    std::vector<std::string> calls;
    LazySound sound{[this] { return std::make_unique<RecordingToolkit>(calls); }};
};

TEST_F(LazySoundTest, SleepAndWakingMakeNothing) {
    sound.setSuspended(true);
    sound.setSuspended(false);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(LazySoundTest, TheFirstQuestionMakesTheToolkitThatAnswersAll) {
    EXPECT_TRUE(sound.hasInputDevice());
    const auto preparation = sound.prepare();
    bool isThere = false;
    const auto observer = sound.observeInputDevice([&](bool now) { isThere = now; });
    EXPECT_TRUE(isThere);
    EXPECT_EQ(sound.makeEngine(), nullptr);
    EXPECT_TRUE(std::holds_alternative<Platform::AudioError>(sound.openFileForWriting("/a", {})));
    EXPECT_TRUE(std::holds_alternative<Platform::AudioError>(sound.makePlayer("/b")));
    sound.setSuspended(true);
    sound.setSuspended(false);
    EXPECT_THAT(calls, ElementsAre("made", "has input device", "prepare", "observe", "engine", "write /a",
                                   "play /b", "asleep", "awake"));
}

struct MissingSoundTest : testing::Test {
    TestSupport::HandDrivenQueue queue;
    LinuxPlatform::MissingSound sound{queue, "no such library"};
};

TEST_F(MissingSoundTest, TellsOnceThatThereIsNoMicrophone) {
    EXPECT_FALSE(sound.hasInputDevice());
    std::vector<bool> told;
    const auto observer = sound.observeInputDevice([&](bool isThere) { told.push_back(isThere); });
    EXPECT_THAT(told, IsEmpty()) << "not before the call is over";
    queue.runReady();
    EXPECT_THAT(told, ElementsAre(false));
}

TEST_F(MissingSoundTest, WhoeverIsGoneIsToldNothing) {
    bool isTold = false;
    {
        const auto observer = sound.observeInputDevice([&](bool /*isThere*/) { isTold = true; });
    }
    queue.runReady();
    EXPECT_FALSE(isTold);
}

TEST_F(MissingSoundTest, ItsEngineHearsNothingAndSaysWhy) {
    const auto engine = sound.makeEngine();
    EXPECT_EQ(engine->inputNode().inputFormat(), Platform::AudioFormat{});
    const auto problem = engine->start();
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->localizedDescription, "no such library");
    EXPECT_FALSE(engine->isRunning());
}

TEST_F(MissingSoundTest, NothingIsRecordedOrPlayed) {
    EXPECT_TRUE(std::holds_alternative<Platform::AudioError>(sound.openFileForWriting("/a", {})));
    EXPECT_TRUE(std::holds_alternative<Platform::AudioError>(sound.makePlayer("/b")));
}

} // namespace
