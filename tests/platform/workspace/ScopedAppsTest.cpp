#include "platform/linux/workspace/ScopedApps.h"

#include "platform/linux/workspace/LinuxWorkspace.h"
#include "tests/platform/apps/AppsWorld.h"
#include "tests/platform/system/ProcFolder.h"
#include "tests/support/FakeWindowSystem.h"
#include "tests/support/HandDrivenQueue.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using LinuxPlatform::AppIdentifier;
using LinuxPlatform::ProcessTable;
using LinuxPlatform::ScopedApp;
using LinuxPlatform::ScopedApps;
using Platform::ActivationPolicy;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr Platform::MainQueue::Seconds aMoment{1};

struct ScopedAppsTest : testing::Test, TestSupport::AppsWorld {
    TestSupport::HandDrivenQueue queue;
    TestSupport::ProcFolder machine{proc};
    ScopedApps scopedApps{entries, queue, ProcessTable(proc)};

    ScopedAppsTest() {
        machine.setOwnControlGroup("/user.slice/session-1.scope");
        installPlain(system / "org.example.Chat.desktop");
        installPlain(system / "xterm.desktop");
    }

    void start(std::uint32_t process, const std::string& unit, std::uint64_t startTime = 0) {
        machine.add(process, {.executable = "/usr/bin/program-" + std::to_string(process),
                              .controlGroup = "/user.slice/app.slice/" + unit,
                              .startTime = startTime});
        queue.advance(aMoment);
    }

    void end(std::uint32_t process) {
        machine.remove(process);
        queue.advance(aMoment);
    }
};

const AppIdentifier chat{"org.example.Chat", "org.example.Chat"};
const std::string chatScope = "app-gnome-org.example.Chat-30.scope";

TEST_F(ScopedAppsTest, EveryUnitOfAnInstalledAppIsOne) {
    start(30, chatScope);
    start(31, chatScope);
    start(20, "app-org.example.Chat@0f.service", 7);
    start(19, "app-org.example.Chat@0f.service", 8);
    start(40, "app-not.installed-40.scope");
    start(41, "session-2.scope");
    EXPECT_THAT(scopedApps.running(),
                ElementsAre(ScopedApp{chat, 20, {19, 20}}, ScopedApp{chat, 30, {30, 31}}));
}

TEST_F(ScopedAppsTest, WhatComesAndGoesIsNoticedAMomentLater) {
    EXPECT_THAT(scopedApps.running(), IsEmpty());
    const auto before = scopedApps.generation();
    machine.add(30, {.controlGroup = "/" + chatScope});
    EXPECT_THAT(scopedApps.running(), IsEmpty()) << "just looked";
    queue.advance(aMoment);
    EXPECT_THAT(scopedApps.running(), SizeIs(1));
    EXPECT_NE(scopedApps.generation(), before);
    const auto running = scopedApps.generation();
    queue.advance(aMoment);
    EXPECT_THAT(scopedApps.running(), SizeIs(1));
    EXPECT_EQ(scopedApps.generation(), running);
    end(30);
    EXPECT_THAT(scopedApps.running(), IsEmpty());
}

TEST_F(ScopedAppsTest, AMachineWithoutAProcessManagerIsNotLookedThrough) {
    machine.setOwnControlGroup("/");
    start(30, chatScope);
    EXPECT_THAT(scopedApps.running(), IsEmpty());
}

struct WindowlessAppsTest : ScopedAppsTest {
    TestSupport::FakeWindowSystem windows;
    LinuxPlatform::AppIdentity identity{entries, ProcessTable(proc)};
    LinuxPlatform::LinuxWorkspace workspace{windows, identity, entries, scopedApps, queue};

    Platform::RunningApplications chats() {
        return workspace.runningApplicationsWithBundleIdentifier("org.example.Chat");
    }
};

TEST_F(WindowlessAppsTest, AnAppWithoutWindowsRunsAndIsHidden) {
    start(30, chatScope);
    start(31, chatScope);
    ASSERT_THAT(chats(), SizeIs(1));
    const auto app = chats().front();
    EXPECT_EQ(app->bundleIdentifier(), "org.example.Chat");
    EXPECT_EQ(app->localizedName(), "org.example.Chat");
    EXPECT_EQ(app->activationPolicy(), ActivationPolicy::accessory);
    EXPECT_TRUE(app->isHidden());
    EXPECT_THAT(workspace.runningApplications(), SizeIs(1));
    app->hide();
    app->unhide();
    app->activate(Platform::ActivationOptions::ignoringOtherApps);
    EXPECT_THAT(windows.hidden, IsEmpty());
    EXPECT_THAT(windows.shown, IsEmpty());
    EXPECT_THAT(windows.activated, IsEmpty());
}

TEST_F(WindowlessAppsTest, AnAppThatClosesItsWindowsStillRuns) {
    start(30, chatScope);
    start(31, chatScope);
    windows.open(1, "org.example.Chat", 31);
    ASSERT_THAT(chats(), SizeIs(1));
    EXPECT_FALSE(chats().front()->isHidden());
    EXPECT_EQ(chats().front()->activationPolicy(), ActivationPolicy::regular);
    windows.close(1);
    ASSERT_THAT(chats(), SizeIs(1));
    EXPECT_TRUE(chats().front()->isHidden());
    windows.open(2, "org.example.Chat", 31);
    ASSERT_THAT(chats(), SizeIs(1));
    EXPECT_FALSE(chats().front()->isHidden());
    windows.close(2);
    end(30);
    end(31);
    EXPECT_THAT(chats(), IsEmpty());
}

TEST_F(WindowlessAppsTest, AnInstanceWithAWindowComesBeforeOneWithout) {
    start(30, chatScope);
    start(40, "app-org.example.Chat-40.scope");
    windows.open(1, "org.example.Chat", 40);
    ASSERT_THAT(chats(), SizeIs(2));
    EXPECT_FALSE(chats().at(0)->isHidden());
    EXPECT_TRUE(chats().at(1)->isHidden());
}

TEST_F(WindowlessAppsTest, WindowsOfOtherAppsInAUnitAreNotItsOwn) {
    start(50, "app-xterm-50.scope");
    start(51, "app-xterm-50.scope");
    windows.open(1, "org.example.Chat", 51);
    EXPECT_THAT(chats(), SizeIs(1));
    const auto terminals = workspace.runningApplicationsWithBundleIdentifier("xterm");
    ASSERT_THAT(terminals, SizeIs(1));
    EXPECT_TRUE(terminals.front()->isHidden());
}

TEST_F(WindowlessAppsTest, AWindowOfAnUnknownProcessIsEnough) {
    start(30, chatScope);
    auto& window = windows.open(1, "org.example.Chat", 0);
    window.hints.process.reset();
    window.client = 7;
    ASSERT_THAT(chats(), SizeIs(1));
    EXPECT_FALSE(chats().front()->isHidden());
}

} // namespace
