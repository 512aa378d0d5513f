#include "Curtain/AudioLevel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Curtain {
namespace {

constexpr float scale = 20.0F;

/// Many sums side by side, since one sum would have to wait for each addition, and lose precision over many
/// frames.
template <std::size_t lanes>
float sumOfSquares(const float* samples, std::size_t frames, std::size_t stride) {
    std::array<float, lanes> sums{};
    const auto whole = frames - frames % lanes;
    for (std::size_t frame = 0; frame < whole; frame += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const float sample = samples[(frame + lane) * stride];
            sums[lane] += sample * sample;
        }
    }
    for (auto frame = whole; frame < frames; ++frame) {
        const float sample = samples[frame * stride];
        sums[frame - whole] += sample * sample;
    }
    for (auto half = lanes / 2; half > 0; half /= 2) {
        for (std::size_t lane = 0; lane < half; ++lane) {
            sums[lane] += sums[lane + half];
        }
    }
    return sums.front();
}

} // namespace

float audioLevel(const Platform::AudioPCMBuffer& buffer) {
    constexpr std::size_t lanes = 16;
    const auto frames = buffer.frameLength;
    const std::size_t stride = buffer.format.channelCount;
    // A stride that the compiler knows lets it load samples side by side.
    const float sum = stride == 1 ? sumOfSquares<lanes>(buffer.floatChannelData, frames, 1)
                                  : sumOfSquares<lanes>(buffer.floatChannelData, frames, stride);
    const float meanSquare = sum / static_cast<float>(std::max<std::size_t>(frames, 1));
    const float level = std::sqrt(meanSquare) * scale;
    return std::isnan(level) ? 0.0F : std::min(level, 1.0F);
}

} // namespace Curtain
