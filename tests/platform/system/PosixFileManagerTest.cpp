#include "platform/linux/system/PosixFileManager.h"

#include "tests/platform/system/FileManagerContract.h"
#include "tests/platform/system/FileSizeLimit.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <future>
#include <string>
#include <vector>

namespace TestSupport {
namespace {

using Platform::WriteOutcome;

struct PosixFileWorld {
    TemporaryFolder temporary;
    LinuxPlatform::PosixFileManager manager;
    std::string folder = temporary.path().string();

    PosixFileWorld() {
        writeFile(folder + "/one", "1");
        writeFile(folder + "/.hidden", "2");
    }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Posix, FileManagerContract, PosixFileWorld);

struct PosixFileManagerTest : FileManagerContract<PosixFileWorld> {};

TEST_F(PosixFileManagerTest, AFileHoldsWhatWasWrittenLast) {
    EXPECT_EQ(manager.write(bytes("much longer than before"), path("one")), WriteOutcome::written);
    EXPECT_EQ(manager.write(bytes(std::string("a\0b", 3)), path("one")), WriteOutcome::written);
    EXPECT_EQ(readFile(path("one")), std::string("a\0b", 3));
}

TEST_F(PosixFileManagerTest, WhatCannotBeWrittenIsSaid) {
    EXPECT_EQ(manager.write(bytes("text"), path("missing/file")), WriteOutcome::failed);
    EXPECT_EQ(manager.write(bytes("text"), world.folder), WriteOutcome::failed);
    EXPECT_EQ(manager.write(bytes("text"), "/dev/full"), WriteOutcome::failed);
}

TEST_F(PosixFileManagerTest, AFileIsForItsOwnerAlone) {
    std::filesystem::permissions(path("one"), std::filesystem::perms(0644));
    EXPECT_EQ(manager.write(bytes("text"), path("one")), WriteOutcome::written);
    EXPECT_EQ(manager.write(bytes("text"), path("new")), WriteOutcome::written);
    for (const auto* const name : {"one", "new"}) {
        EXPECT_EQ(std::filesystem::status(path(name)).permissions(), std::filesystem::perms(0600)) << name;
    }
}

TEST_F(PosixFileManagerTest, WhereThereIsNoSpaceTheEarlierFileStaysAndNothingIsLeftBesideIt) {
    {
        const FileSizeLimit limit(4);
        EXPECT_EQ(manager.write(bytes("too long"), path("one")), WriteOutcome::noSpace);
    }
    EXPECT_EQ(readFile(path("one")), "1");
    EXPECT_THAT(*manager.contentsOfDirectory(world.folder),
                testing::UnorderedElementsAre(path("one"), path(".hidden")));
}

TEST_F(PosixFileManagerTest, OneFileMayBeWrittenFromTwoThreadsAtOnce) {
    const auto writeManyTimes = [&](const std::string& text) {
        std::vector<WriteOutcome> outcomes(100);
        std::ranges::generate(outcomes, [&] { return manager.write(bytes(text), path("one")); });
        return outcomes;
    };
    auto others = std::async(std::launch::async, [&] { return writeManyTimes("other"); });
    EXPECT_THAT(writeManyTimes("this"), testing::Each(WriteOutcome::written));
    EXPECT_THAT(others.get(), testing::Each(WriteOutcome::written));
    EXPECT_THAT(readFile(path("one")), testing::AnyOf("this", "other"));
    EXPECT_THAT(*manager.contentsOfDirectory(world.folder),
                testing::UnorderedElementsAre(path("one"), path(".hidden")));
}

TEST_F(PosixFileManagerTest, AFolderThatHoldsSomethingIsNotRemoved) {
    EXPECT_FALSE(manager.removeItem(world.folder));
    EXPECT_EQ(readFile(path("one")), "1");
}

TEST_F(PosixFileManagerTest, AFileIsNoFolder) {
    EXPECT_EQ(manager.contentsOfDirectory(path("one")), std::nullopt);
}

} // namespace
} // namespace TestSupport
