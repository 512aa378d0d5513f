#include "Curtain/DesktopChecker.h"

#include "tests/support/FakeInstallation.h"
#include "tests/support/FakeProcessRunner.h"
#include "tests/support/FakeUserFolders.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/HandDrivenWorkQueues.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using Report = Curtain::DesktopChecker::Report;
using testing::ElementsAre;
using testing::IsEmpty;

struct DesktopCheckerTest : testing::Test {
    TestSupport::FakeProcessRunner runner;
    TestSupport::FakeInstallation files;
    TestSupport::FakeUserFolders folders;
    TestSupport::HandDrivenWorkQueues workQueues;
    TestSupport::HandDrivenQueue mainQueue;
    Curtain::DesktopController controller{runner};
    Curtain::DesktopChecker checker{controller, files, folders, workQueues, mainQueue};

    void putOnDesktop(const std::string& name) { files.addFile("/home/ada/Desktop/" + name); }
};

TEST_F(DesktopCheckerTest, CountsWhatDoesNotBeginWithADot) {
    for (const auto* name : {".DS_Store", "letter.odt", ".hidden", "Holiday", "a.b.c"}) {
        putOnDesktop(name);
    }
    EXPECT_EQ(checker.check(), (Report{3, false}));
    EXPECT_THAT(files.listedFolders, ElementsAre("/home/ada/Desktop"));
}

TEST_F(DesktopCheckerTest, CountsWithoutAskingForTheIcons) {
    putOnDesktop("letter.odt");
    putOnDesktop(".hidden");
    EXPECT_EQ(checker.fileCount(), 1);
    EXPECT_THAT(runner.runs, IsEmpty());
    files.unreadableFolders = {"/home/ada/Desktop"};
    EXPECT_EQ(checker.fileCount(), 0);
    folders.desktopFolder = std::nullopt;
    EXPECT_EQ(checker.fileCount(), 0);
}

TEST_F(DesktopCheckerTest, ADotInTheFoldersOwnNameHidesNothing) {
    folders.desktopFolder = "/home/ada/.desk/.top";
    files.addFile("/home/ada/.desk/.top/letter.odt");
    EXPECT_EQ(checker.check().fileCount, 1);
}

TEST_F(DesktopCheckerTest, ReportsHiddenIcons) {
    putOnDesktop("letter.odt");
    runner.setting = "0\n";
    EXPECT_EQ(checker.check(), (Report{1, true}));
}

TEST_F(DesktopCheckerTest, ReadsTheSettingOnceAndBeforeTheFolder) {
    putOnDesktop("letter.odt");
    runner.onRun = [this] { EXPECT_THAT(files.listedFolders, IsEmpty()); };
    checker.check();
    EXPECT_THAT(runner.runs, ElementsAre(TestSupport::FakeProcessRunner::readingIcons()));
    EXPECT_EQ(files.listedFolders.size(), 1U);
}

TEST_F(DesktopCheckerTest, AMissingFolderIsEmpty) {
    EXPECT_EQ(checker.check(), Report{});
}

TEST_F(DesktopCheckerTest, AnUnreadableFolderIsEmpty) {
    putOnDesktop("letter.odt");
    files.unreadableFolders = {"/home/ada/Desktop"};
    runner.setting = "0";
    EXPECT_EQ(checker.check(), (Report{0, true}));
}

TEST_F(DesktopCheckerTest, NoDesktopFolderIsNoFiles) {
    folders.desktopFolder.reset();
    EXPECT_EQ(checker.check(), Report{});
    EXPECT_THAT(files.listedFolders, IsEmpty());
}

TEST_F(DesktopCheckerTest, RequestingAccessReadsTheFolderBesideTheMainThread) {
    int completions = 0;
    checker.requestAccess([&] { ++completions; });
    EXPECT_THAT(files.listedFolders, IsEmpty());
    mainQueue.runReady();
    EXPECT_EQ(completions, 0);

    workQueues.runAll();
    EXPECT_THAT(files.listedFolders, ElementsAre("/home/ada/Desktop"));
    EXPECT_EQ(completions, 0);

    mainQueue.runReady();
    EXPECT_EQ(completions, 1);
    EXPECT_THAT(runner.runs, IsEmpty());
}

TEST_F(DesktopCheckerTest, RequestingAccessCompletesWhateverCameOfIt) {
    int completions = 0;
    files.unreadableFolders = {"/home/ada/Desktop"};
    checker.requestAccess([&] { ++completions; });
    folders.desktopFolder.reset();
    checker.requestAccess([&] { ++completions; });
    workQueues.runAll();
    mainQueue.runReady();
    EXPECT_EQ(completions, 2);
}

} // namespace
