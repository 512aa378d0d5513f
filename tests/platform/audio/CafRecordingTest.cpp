#include "platform/linux/audio/CafRecording.h"

#include "tests/platform/system/FileSizeLimit.h"
#include "tests/platform/system/ForkedChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <vector>

#include <sys/stat.h>

namespace {

using LinuxPlatform::CafRecording;
using Platform::AudioError;
using Platform::AudioFormat;

struct CafRecordingTest : testing::Test {
    TestSupport::TemporaryFolder folder;
    std::filesystem::path path = folder.path() / "recording.caf";

    std::variant<std::unique_ptr<Platform::AudioFile>, AudioError> create(const AudioFormat& format) const {
        return CafRecording::create(path.string(), format);
    }

    std::unique_ptr<Platform::AudioFile> mustCreate(const AudioFormat& format) const {
        auto made = create(format);
        return std::move(std::get<std::unique_ptr<Platform::AudioFile>>(made));
    }
};

TEST_F(CafRecordingTest, WhatIsWrittenCanBeRead) {
    for (const auto& format : {AudioFormat{1, 48000}, {2, 44100}, {8, 192000}, {1, 8000}}) {
        std::vector<float> samples(std::size_t{1024} * format.channelCount);
        for (std::size_t index = 0; index < samples.size(); ++index) {
            samples[index] = static_cast<float>(index) / 10000;
        }
        {
            const auto file = mustCreate(format);
            EXPECT_TRUE(file->write({format, samples.data(), 1024}));
            EXPECT_TRUE(file->write({format, samples.data(), 0}));
            EXPECT_TRUE(file->write({format, samples.data(), 1}));
        }
        SF_INFO info{};
        auto* const read = sf_open(path.c_str(), SFM_READ, &info);
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(info.frames, 1025);
        EXPECT_EQ(info.samplerate, static_cast<int>(format.sampleRate));
        EXPECT_EQ(info.channels, static_cast<int>(format.channelCount));
        EXPECT_EQ(info.format & SF_FORMAT_TYPEMASK, SF_FORMAT_CAF);
        EXPECT_EQ(info.format & SF_FORMAT_SUBMASK, SF_FORMAT_FLOAT);
        std::vector<float> back(samples.size());
        EXPECT_EQ(sf_readf_float(read, back.data(), 1024), 1024);
        EXPECT_EQ(back, samples);
        sf_close(read);
        std::filesystem::remove(path);
    }
}

TEST_F(CafRecordingTest, OnlyItsOwnerMayReadIt) {
    const auto before = umask(0);
    const auto file = mustCreate({1, 48000});
    umask(before);
    EXPECT_EQ(std::filesystem::status(path).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(CafRecordingTest, NeitherALinkNorAFileIsWrittenInto) {
    const auto victim = folder.path() / "victim";
    for (const bool isThere : {false, true}) {
        if (isThere) {
            TestSupport::writeFile(victim, "precious");
        }
        std::filesystem::create_symlink(victim, path);
        EXPECT_TRUE(std::holds_alternative<AudioError>(create({1, 48000})));
        EXPECT_EQ(TestSupport::readFile(victim), isThere ? "precious" : "");
        std::filesystem::remove(path);
    }
    std::filesystem::create_hard_link(victim, path);
    EXPECT_TRUE(std::holds_alternative<AudioError>(create({1, 48000})));
    EXPECT_EQ(TestSupport::readFile(victim), "precious");
}

TEST_F(CafRecordingTest, AFormatThatCannotBeIsRefusedAndLeavesNoFile) {
    for (const auto& format : {AudioFormat{0, 48000}, {1, 0}, {1, -1}, {1, 1e12}, {100000, 48000}, {0, 0}}) {
        EXPECT_TRUE(std::holds_alternative<AudioError>(create(format)))
            << format.channelCount << " channels, " << format.sampleRate;
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST_F(CafRecordingTest, AFolderThatIsMissingOrReadOnlyIsAnError) {
    for (const auto* place : {"/nowhere/recording.caf", "/proc/recording.caf"}) {
        const auto made = CafRecording::create(place, {1, 48000});
        ASSERT_TRUE(std::holds_alternative<AudioError>(made));
        EXPECT_THAT(std::get<AudioError>(made).localizedDescription, testing::StartsWith(place));
    }
}

TEST_F(CafRecordingTest, ABufferOfAnotherKindIsNotWritten) {
    const auto file = mustCreate({1, 48000});
    const std::vector<float> samples(8);
    EXPECT_FALSE(file->write({{2, 48000}, samples.data(), 4}));
    EXPECT_FALSE(file->write({{1, 44100}, samples.data(), 8}));
    EXPECT_FALSE(file->write({{1, 48000}, nullptr, 8}));
}

TEST_F(CafRecordingTest, AMillionFramesAtOnceAreWritten) {
    const std::vector<float> samples(1'000'000, 0.5F);
    mustCreate({1, 48000})->write({{1, 48000}, samples.data(), samples.size()});
    EXPECT_GT(std::filesystem::file_size(path), 4'000'000U);
}

TEST_F(CafRecordingTest, AFullDiskLosesTheRestAndNothingElse) {
    TestSupport::ForkedChild child([this] {
        const TestSupport::FileSizeLimit limit(100'000);
        const std::vector<float> samples(1024, 0.5F);
        const AudioFormat format{1, 48000};
        const auto file = mustCreate(format);
        bool wasWritten = true;
        for (int count = 0; count < 100; ++count) {
            wasWritten = file->write({format, samples.data(), 1024});
        }
        EXPECT_FALSE(wasWritten);
    });
    EXPECT_EQ(child.wait(), 0);
    SF_INFO info{};
    auto* const read = sf_open(path.c_str(), SFM_READ, &info);
    ASSERT_NE(read, nullptr);
    EXPECT_GT(info.frames, 20'000);
    sf_close(read);
}

} // namespace
