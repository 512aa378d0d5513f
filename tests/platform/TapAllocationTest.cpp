#include "Curtain/AudioLevel.h"
#include "platform/linux/audio/CafRecording.h"
#include "platform/linux/audio/TapBuffers.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <variant>
#include <vector>

namespace {

std::atomic<int> allocations = 0;

void* allocate(std::size_t size) {
    ++allocations;
    if (auto* const memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

} // namespace

// Every allocation of this program is counted.
void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

namespace {

TEST(TapAllocationTest, TheCounterCounts) {
    const int before = allocations;
    const auto memory = std::make_unique<std::vector<int>>(1000);
    EXPECT_EQ(allocations, before + 2) << memory->size();
}

TEST(TapAllocationTest, NothingIsAllocatedForABuffer) {
    const TestSupport::TemporaryFolder folder;
    const Platform::AudioFormat format{2, 48000};
    auto made = LinuxPlatform::CafRecording::create((folder.path() / "recording.caf").string(), format);
    const auto file = std::move(std::get<std::unique_ptr<Platform::AudioFile>>(made));
    LinuxPlatform::TapBuffers buffers(1024, 2);
    const std::vector<float> samples(std::size_t{5000} * 2, 0.01F);
    float level = 0;
    int delivered = 0;
    const int before = allocations;
    for (int round = 0; round < 10; ++round) {
        for (const std::size_t frames : {441U, 1024U, 5000U}) {
            buffers.push(samples.data(), frames, [&](const float* full, std::size_t count) {
                const Platform::AudioPCMBuffer buffer{format, full, count};
                level = Curtain::audioLevel(buffer);
                file->write(buffer);
                ++delivered;
            });
        }
    }
    const int after = allocations;
    EXPECT_EQ(after, before);
    EXPECT_GT(delivered, 60);
    EXPECT_GT(level, 0.0F);
}

} // namespace
