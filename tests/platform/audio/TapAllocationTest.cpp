#include "Curtain/MicrophoneMonitor.h"
#include "platform/linux/audio/CafRecording.h"
#include "platform/linux/audio/TapBuffers.h"
#include "platform/linux/system/PosixFileManager.h"
#include "platform/qt/QtMainQueue.h"

#include "tests/support/EventLoop.h"
#include "tests/support/FakeAudioServices.h"
#include "tests/support/FakeMediaAuthorization.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/support/ProgramArguments.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
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

/// A microphone that the test feeds, and real recordings.
class RecordingAudioServices : public TestSupport::FakeAudioServices {
public:
    std::variant<std::unique_ptr<Platform::AudioFile>, Platform::AudioError>
    openFileForWriting(const std::string& path, const Platform::AudioFormat& settings) override {
        return LinuxPlatform::CafRecording::create(path, settings);
    }
};

TEST(TapAllocationTest, NothingIsAllocatedForABuffer) {
    TestSupport::ProgramArguments arguments;
    const QCoreApplication application(arguments.count, arguments.values.data());
    const TestSupport::TemporaryFolder folder;
    const Platform::AudioFormat format{2, 48000};
    RecordingAudioServices audio;
    audio.inputFormat = format;
    TestSupport::FakeMediaAuthorization authorization;
    LinuxPlatform::PosixFileManager files;
    TestSupport::FakeUserFolders folders;
    folders.temporaryFolder = folder.path().string();
    QtPlatform::QtMainQueue mainQueue;
    TestSupport::HandDrivenWorkQueues workQueues;
    TestSupport::RecordingLog log;
    Curtain::MicrophoneMonitor monitor({audio, authorization, files, folders, mainQueue, workQueues, log});
    monitor.start();
    workQueues.runAll();
    monitor.startEcho();
    ASSERT_EQ(monitor.echoPhase(), Curtain::EchoPhase::recording);
    LinuxPlatform::TapBuffers buffers(1024, 2);
    const std::vector<float> samples(std::size_t{5000} * 2, 0.01F);
    int delivered = 0;
    const int before = allocations;
    for (int round = 0; round < 10; ++round) {
        for (const std::size_t frames : {441U, 1024U, 5000U}) {
            buffers.push(samples.data(), frames, [&](const float* full, std::size_t count) {
                audio.engine().feed({format, full, count});
                ++delivered;
            });
        }
    }
    const int after = allocations;
    EXPECT_EQ(after, before);
    EXPECT_GT(delivered, 60);
    EXPECT_GT(std::filesystem::file_size(folder.path() / "curtain-mic-test.caf"),
              std::size_t{60} * 1024 * 2 * sizeof(float));
    EXPECT_EQ(monitor.level(), 0.0F);
    EXPECT_TRUE(TestSupport::spinUntil([&] { return monitor.level() > 0; }, std::chrono::seconds(20)));
}

} // namespace
