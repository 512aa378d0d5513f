#include "platform/linux/system/PosixFileManager.h"

#include "tests/support/FileManagerContract.h"
#include "tests/support/TemporaryFolder.h"

namespace TestSupport {
namespace {

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
    EXPECT_TRUE(manager.write(bytes("much longer than before"), path("one")));
    EXPECT_TRUE(manager.write(bytes(std::string("a\0b", 3)), path("one")));
    EXPECT_EQ(readFile(path("one")), std::string("a\0b", 3));
}

TEST_F(PosixFileManagerTest, WhatCannotBeWrittenIsSaid) {
    EXPECT_FALSE(manager.write(bytes("text"), path("missing/file")));
    EXPECT_FALSE(manager.write(bytes("text"), world.folder));
    EXPECT_FALSE(manager.write(bytes("text"), "/dev/full"));
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
