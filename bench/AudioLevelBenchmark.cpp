#include "Curtain/AudioLevel.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <vector>

namespace {

std::vector<float> noise(std::size_t count) {
    std::vector<float> samples(count);
    for (std::size_t index = 0; index < count; ++index) {
        samples[index] = std::sin(static_cast<float>(index * index));
    }
    return samples;
}

/// One buffer of the tap. To stay below 300 ns.
void levelOfABuffer(benchmark::State& state) {
    const auto channels = static_cast<std::uint32_t>(state.range(0));
    const auto samples = noise(std::size_t{1024} * channels);
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(Curtain::audioLevel({{channels, 48000}, samples.data(), 1024}));
    }
}
BENCHMARK(levelOfABuffer)->Arg(1)->Arg(2)->Arg(8);

/// The floor: reading the samples once.
void sumOfABuffer(benchmark::State& state) {
    const auto samples = noise(1024);
    for ([[maybe_unused]] auto step : state) {
        benchmark::DoNotOptimize(std::reduce(samples.begin(), samples.end()));
    }
}
BENCHMARK(sumOfABuffer);

} // namespace
