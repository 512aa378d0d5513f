#include "platform/linux/audio/TapBuffers.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace {

using LinuxPlatform::TapBuffers;

struct Sink {
    std::vector<float> samples;
    std::vector<std::size_t> lengths;

    auto deliver(std::size_t channels) {
        return [this, channels](const float* data, std::size_t frames) {
            samples.insert(samples.end(), data, data + frames * channels);
            lengths.push_back(frames);
        };
    }
};

std::vector<float> counting(std::size_t count) {
    std::vector<float> samples(count);
    std::iota(samples.begin(), samples.end(), 0.0F);
    return samples;
}

TEST(TapBuffersTest, WholeBuffersComeOutHoweverTheSamplesGoIn) {
    for (const std::size_t channels : {1U, 2U, 8U}) {
        for (const std::size_t piece : {1U, 441U, 1023U, 1024U, 1025U, 2048U, 5000U}) {
            TapBuffers buffers(1024, channels);
            Sink sink;
            const auto samples = counting(10240 * channels);
            for (std::size_t frame = 0; frame < 10240; frame += piece) {
                buffers.push(&samples[frame * channels], std::min<std::size_t>(piece, 10240 - frame),
                             sink.deliver(channels));
            }
            EXPECT_THAT(sink.lengths, testing::SizeIs(10));
            EXPECT_THAT(sink.lengths, testing::Each(1024U));
            EXPECT_EQ(sink.samples, samples) << channels << " channels, " << piece << " frames at a time";
        }
    }
}

TEST(TapBuffersTest, AGapIsSilence) {
    TapBuffers buffers(4, 1);
    Sink sink;
    const auto samples = counting(4);
    buffers.push(&samples[1], 3, sink.deliver(1));
    buffers.push(nullptr, 6, sink.deliver(1));
    buffers.push(&samples[1], 3, sink.deliver(1));
    EXPECT_THAT(sink.samples, testing::ElementsAre(1, 2, 3, 0, 0, 0, 0, 0, 0, 1, 2, 3));
}

TEST(TapBuffersTest, SilenceIsAWholeBufferOfItsOwn) {
    TapBuffers buffers(4, 1);
    Sink sink;
    buffers.pushSilence(sink.deliver(1));
    EXPECT_THAT(sink.samples, testing::ElementsAre(0, 0, 0, 0));
    const auto samples = counting(4);
    buffers.push(&samples[1], 3, sink.deliver(1));
    buffers.pushSilence(sink.deliver(1));
    buffers.push(samples.data(), 4, sink.deliver(1));
    EXPECT_THAT(sink.samples, testing::ElementsAre(0, 0, 0, 0, 1, 2, 3, 0, 0, 0, 0, 0, 0, 1, 2, 3));
    EXPECT_THAT(sink.lengths, testing::Each(4U));
}

TEST(TapBuffersTest, OddSizesDoNoHarm) {
    Sink sink;
    const auto samples = counting(4);
    TapBuffers(0, 1).push(samples.data(), 4, sink.deliver(1));
    EXPECT_EQ(sink.samples, samples);
    TapBuffers(1024, 0).push(samples.data(), 4, sink.deliver(0));
    TapBuffers(1024, 1).push(samples.data(), 0, sink.deliver(1));
    TapBuffers(1024, 0).pushSilence(sink.deliver(0));
    EXPECT_THAT(sink.lengths, testing::SizeIs(4));
}

} // namespace
