#include "Curtain/DesktopChecker.h"

#include "platform/linux/system/PosixFileManager.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

TEST(ManyDesktopFilesTest, AHundredThousandAreCounted) {
    const TestSupport::TemporaryFolder folder;
    // Links are made faster than files.
    for (int number = 0; number < 100'000; ++number) {
        std::filesystem::create_symlink("nowhere", folder.path() / std::to_string(number));
    }
    std::filesystem::create_symlink("nowhere", folder.path() / ".hidden");
    TestSupport::FakeProcessRunner runner;
    TestSupport::FakeUserFolders folders;
    folders.desktopFolder = folder.path().string();
    LinuxPlatform::PosixFileManager files;
    TestSupport::HandDrivenWorkQueues workQueues;
    TestSupport::HandDrivenQueue mainQueue;
    const Curtain::DesktopController controller(runner);
    const Curtain::DesktopChecker checker(controller, files, folders, workQueues, mainQueue);
    EXPECT_EQ(checker.check().fileCount, 100'000);
}

} // namespace
