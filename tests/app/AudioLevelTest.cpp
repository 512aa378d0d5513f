#include "Curtain/AudioLevel.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <vector>

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

float levelOf(const std::vector<float>& samples, std::uint32_t channels = 1) {
    return Curtain::audioLevel({{channels, 48000}, samples.data(), samples.size() / channels});
}

std::vector<float> sine(float amplitude, std::size_t frames) {
    std::vector<float> samples(frames);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        samples[frame] =
            amplitude * std::sin(2 * std::numbers::pi_v<float> * 440 * static_cast<float>(frame) / 48000);
    }
    return samples;
}

TEST(AudioLevelTest, SilenceIsZero) {
    EXPECT_EQ(levelOf(std::vector<float>(1024)), 0.0F);
}

TEST(AudioLevelTest, AnEmptyBufferIsZero) {
    EXPECT_EQ(levelOf({}), 0.0F);
}

TEST(AudioLevelTest, AFullScaleSineIsCutOffAtOne) {
    EXPECT_EQ(levelOf(sine(1, 1024)), 1.0F);
}

TEST(AudioLevelTest, IsTwentyTimesTheRootOfTheMeanSquare) {
    EXPECT_FLOAT_EQ(levelOf({0.03F, -0.04F}), 20 * std::sqrt((0.0009F + 0.0016F) / 2));
    EXPECT_FLOAT_EQ(levelOf({0.01F}), 0.2F);
    EXPECT_NEAR(levelOf(sine(0.02F, 48000)), 20 * 0.02F / std::numbers::sqrt2_v<float>, 1e-5F);
}

TEST(AudioLevelTest, EveryLengthCountsEveryFrameOnce) {
    for (std::size_t frames = 1; frames <= 70; ++frames) {
        for (std::size_t loud = 0; loud < frames; ++loud) {
            std::vector<float> samples(frames);
            samples[loud] = 0.01F;
            ASSERT_FLOAT_EQ(levelOf(samples), 0.2F / std::sqrt(static_cast<float>(frames)));
        }
    }
}

TEST(AudioLevelTest, OnlyTheFirstChannelCounts) {
    EXPECT_FLOAT_EQ(levelOf({0.01F, 1, 0.01F, 1}, 2), 0.2F);
    std::vector<float> eight(std::size_t{8} * 1920, notANumber);
    for (std::size_t frame = 0; frame < 1920; ++frame) {
        eight[8 * frame] = 0.01F;
    }
    EXPECT_NEAR(levelOf(eight, 8), 0.2F, 1e-6F);
}

TEST(AudioLevelTest, AMillionFramesLoseNoPrecision) {
    EXPECT_NEAR(levelOf(std::vector<float>(1'000'000, 0.01F)), 0.2F, 1e-4F);
}

TEST(AudioLevelTest, IsAlwaysANumberFromZeroToOne) {
    for (const auto& samples : {std::vector<float>{notANumber},
                                {infinity},
                                {-infinity},
                                {infinity, notANumber},
                                {3e38F, -3e38F},
                                {1e-44F},
                                {1e10F, 0, notANumber}}) {
        const auto level = levelOf(samples);
        EXPECT_GE(level, 0.0F);
        EXPECT_LE(level, 1.0F);
    }
}

} // namespace
