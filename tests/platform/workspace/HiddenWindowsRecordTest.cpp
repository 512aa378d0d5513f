#include "platform/linux/workspace/HiddenWindowsRecord.h"

#include "platform/linux/session/RecordedNote.h"
#include "platform/linux/workspace/LinuxWorkspace.h"
#include "tests/platform/system/ProcFolder.h"
#include "tests/support/FakeWindowSystem.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/MemoryUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

namespace {

using Platform::RunningApplication;
using testing::ElementsAre;
using testing::IsEmpty;

/// Apps whose windows stay while the program that hides them ends at any moment and begins anew.
struct HiddenWindowsRecordTest : testing::Test {
    TestSupport::TemporaryFolder folder;
    TestSupport::ProcFolder processes{folder.path()};
    TestSupport::MemoryUserDefaults disk;
    TestSupport::FakeWindowSystem windows;
    LinuxPlatform::DesktopEntries entries{{}};
    LinuxPlatform::AppIdentity identity{entries, LinuxPlatform::ProcessTable("/nonexistent")};
    TestSupport::HandDrivenQueue mainQueue;
    LinuxPlatform::ScopedApps scopedApps{entries, mainQueue, LinuxPlatform::ProcessTable("/nonexistent")};
    std::unique_ptr<LinuxPlatform::LinuxWorkspace> workspace;

    void SetUp() override {
        processes.add(10, {.startTime = 100});
        processes.add(11, {.startTime = 110});
        begin();
    }

    void begin(const std::string& session = "this") {
        workspace = std::make_unique<LinuxPlatform::LinuxWorkspace>(
            windows, identity, entries, scopedApps, mainQueue, "",
            LinuxPlatform::HiddenWindowsRecord(LinuxPlatform::EarlierValue(disk, "hidden", session),
                                               LinuxPlatform::ProcessTable(folder.path())));
    }

    void crashAndBegin(const std::string& session = "this") {
        workspace.reset();
        windows.hidden.clear();
        windows.shown.clear();
        begin(session);
    }

    /// It was hidden and came back; once that has been seen after the crash, its user puts it away.
    void crashAfterTheFirstOfTwoCameBack() {
        windows.open(1, "a", 10);
        windows.open(2, "a", 10);
        ask(&RunningApplication::hide);
        windows.at(1).isHidden = false;
        crashAndBegin();
        workspace->runningApplications();
        windows.at(1).isHidden = true;
    }

    void ask(void (RunningApplication::*request)()) {
        for (const auto& instance : workspace->runningApplicationsWithBundleIdentifier("a")) {
            (*instance.*request)();
        }
    }
};

TEST_F(HiddenWindowsRecordTest, WhatItsUserHadPutAwayStaysAwayAcrossACrash) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10).isHidden = true;
    windows.open(3, "a", 11).isHidden = true;
    windows.open(4, "a", 11);
    ask(&RunningApplication::hide);
    crashAndBegin();
    ask(&RunningApplication::hide);
    ask(&RunningApplication::unhide);
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1), ElementsAre(4)));
    EXPECT_TRUE(windows.at(2).isHidden && windows.at(3).isHidden);
}

TEST_F(HiddenWindowsRecordTest, TheWindowSystemHearsOnceAgainOfWhatItHasHidden) {
    windows.open(1, "a", 10);
    ask(&RunningApplication::hide);
    crashAndBegin();
    ask(&RunningApplication::hide);
    ask(&RunningApplication::hide);
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(1), IsEmpty()));
}

TEST_F(HiddenWindowsRecordTest, ItIsOnDiskBeforeAWindowIsHidden) {
    windows.open(1, "a", 10);
    windows.takesEffect = false;
    ask(&RunningApplication::hide);
    EXPECT_EQ(disk.values.at("hidden"), "this\n1 10,100\n");
}

TEST_F(HiddenWindowsRecordTest, NothingIsLeftOfWhatIsBackOrGone) {
    windows.open(1, "a", 10);
    ask(&RunningApplication::hide);
    ask(&RunningApplication::unhide);
    EXPECT_FALSE(disk.values.contains("hidden"));
    ask(&RunningApplication::hide);
    workspace->runningApplications();
    windows.at(1).isHidden = false;
    workspace->runningApplications();
    EXPECT_FALSE(disk.values.contains("hidden"));
    ask(&RunningApplication::hide);
    windows.close(1);
    workspace->runningApplications();
    EXPECT_FALSE(disk.values.contains("hidden"));
}

TEST_F(HiddenWindowsRecordTest, ItIsNotWrittenWhereNothingHasChanged) {
    windows.open(1, "a", 10);
    windows.open(2, "b", 11);
    ask(&RunningApplication::hide);
    const auto writes = disk.writes;
    windows.at(2).isHidden = true;
    workspace->runningApplications();
    EXPECT_EQ(disk.writes, writes);
}

TEST_F(HiddenWindowsRecordTest, WhatCameBackMeanwhileIsItsUsers) {
    crashAfterTheFirstOfTwoCameBack();
    ask(&RunningApplication::unhide);
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(2)));
}

TEST_F(HiddenWindowsRecordTest, WhatCameBackIsItsUsersAfterASecondCrashToo) {
    crashAfterTheFirstOfTwoCameBack();
    crashAndBegin();
    ask(&RunningApplication::unhide);
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(2)));
}

TEST_F(HiddenWindowsRecordTest, IsForgottenWithTheNoteOfPrivacyMode) {
    LinuxPlatform::RecordedNote note({disk, "note", "this"}, {disk, "hidden", "this"});
    note.keep("on");
    windows.open(1, "a", 10);
    ask(&RunningApplication::hide);
    EXPECT_EQ(note.text(), "on");
    EXPECT_TRUE(disk.values.contains("hidden"));
    note.keep(std::nullopt);
    EXPECT_EQ(note.text(), std::nullopt);
    EXPECT_FALSE(disk.values.contains("hidden"));
}

TEST_F(HiddenWindowsRecordTest, WhatIsListedLaterIsKnownThen) {
    windows.open(1, "a", 10);
    ask(&RunningApplication::hide);
    workspace.reset();
    windows.close(1);
    begin();
    workspace->runningApplications();
    // A second crash before anything was listed loses nothing.
    begin();
    workspace->runningApplications();
    windows.open(1, "a", 10).isHidden = true;
    windows.open(2, "a", 10).isHidden = true;
    ask(&RunningApplication::unhide);
    EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1)));
}

TEST_F(HiddenWindowsRecordTest, AnotherProcessThatHasTheNumbersIsNotBelieved) {
    windows.open(1, "a", 10);
    windows.open(2, "a", 10);
    ask(&RunningApplication::hide);
    for (const auto startTime : {std::uint64_t{101}, std::uint64_t{0}}) {
        const auto left = disk.values;
        processes.remove(10);
        if (startTime != 0) {
            processes.add(10, {.startTime = startTime});
        }
        crashAndBegin();
        windows.at(1).isHidden = windows.at(2).isHidden = true;
        ask(&RunningApplication::hide);
        EXPECT_THAT(windows.hidden, ElementsAre(IsEmpty()));
        ask(&RunningApplication::unhide);
        EXPECT_THAT(windows.shown, ElementsAre(ElementsAre(1, 2)));
        disk.values = left;
    }
}

TEST_F(HiddenWindowsRecordTest, AWindowOfAnotherProcessIsNotBelieved) {
    windows.open(1, "a", 10);
    ask(&RunningApplication::hide);
    windows.at(1).hints.process = 11;
    crashAndBegin();
    ask(&RunningApplication::hide);
    EXPECT_THAT(windows.hidden, ElementsAre(IsEmpty()));
}

TEST_F(HiddenWindowsRecordTest, OfAWindowWhoseProcessIsNotKnownItsNumberIsBelieved) {
    windows.open(1, "a", 10).hints.process.reset();
    ask(&RunningApplication::hide);
    crashAndBegin();
    ask(&RunningApplication::hide);
    EXPECT_THAT(windows.hidden, ElementsAre(ElementsAre(1)));
}

TEST_F(HiddenWindowsRecordTest, ARecordOfAnotherSessionIsNotBelieved) {
    windows.open(1, "a", 10);
    ask(&RunningApplication::hide);
    crashAndBegin("another");
    ask(&RunningApplication::hide);
    EXPECT_THAT(windows.hidden, ElementsAre(IsEmpty()));
}

TEST_F(HiddenWindowsRecordTest, OfADamagedRecordNoMoreIsBelievedThanIsWhole) {
    for (const auto* const text : {"this\nx 10,100\n1 10,100\n", "this\n1", "this\n-1 10,100\n",
                                   "this\n1 10\n", "this", "", "\xff\n1 10,100\n"}) {
        workspace.reset();
        windows.hidden.clear();
        windows.list.clear();
        disk.values["hidden"] = text;
        begin();
        windows.open(1, "a", 10).isHidden = true;
        ask(&RunningApplication::hide);
        EXPECT_THAT(windows.hidden, ElementsAre(IsEmpty())) << text;
    }
}

} // namespace
