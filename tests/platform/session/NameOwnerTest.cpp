#include "platform/linux/session/NameOwner.h"

#include "tests/platform/system/ProcFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using LinuxPlatform::NameOwner;

constexpr std::uint32_t owner = 10;
constexpr std::uint32_t thisProcess = 20;

struct NameOwnerTest : testing::Test {
    TestSupport::TemporaryFolder folder;
    TestSupport::ProcFolder processes{folder.path()};
    LinuxPlatform::SessionEnvironment session;

    void SetUp() override {
        session.display = ":1";
        processes.add(thisProcess, {.executable = "/usr/bin/curtain"});
    }

    NameOwner judge(const std::string& executable, const std::vector<std::string>& environment) {
        processes.remove(owner);
        processes.add(owner, {.executable = executable, .environment = environment});
        return LinuxPlatform::judgeNameOwner(LinuxPlatform::ProcessTable(folder.path()), owner, thisProcess,
                                             session);
    }
};

TEST_F(NameOwnerTest, AnotherProgramIsAStranger) {
    EXPECT_EQ(judge("/usr/bin/python3.11", {"DISPLAY=:1"}), NameOwner::stranger);
    EXPECT_EQ(judge("/usr/bin/curtain2", {"DISPLAY=:2"}), NameOwner::stranger);
}

TEST_F(NameOwnerTest, TheSameProgramMayHaveBeenInstalledAnewOrElsewhere) {
    EXPECT_EQ(judge("/usr/bin/curtain (deleted)", {"DISPLAY=:1"}), NameOwner::thisSessions);
    EXPECT_EQ(judge("/opt/bin/curtain", {"DISPLAY=:1"}), NameOwner::thisSessions);
}

TEST_F(NameOwnerTest, AnotherDisplayIsAnotherSession) {
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=:2"}), NameOwner::anotherSessions);
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=:10"}), NameOwner::anotherSessions);
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=:1.0"}), NameOwner::thisSessions);
    session.display = "host.example:1.1";
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=host.example:1"}), NameOwner::thisSessions);
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=host:1"}), NameOwner::anotherSessions);
}

TEST_F(NameOwnerTest, AnotherCompositorIsAnotherSession) {
    session.waylandSocket = "/run/user/1000/wayland-1";
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=:1", "WAYLAND_DISPLAY=wayland-1"}),
              NameOwner::thisSessions);
    EXPECT_EQ(judge("/usr/bin/curtain", {"WAYLAND_DISPLAY=/run/user/1000/wayland-1"}),
              NameOwner::thisSessions);
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=:1", "WAYLAND_DISPLAY=wayland-0"}),
              NameOwner::anotherSessions);
    EXPECT_EQ(judge("/usr/bin/curtain", {"DISPLAY=:0"}), NameOwner::anotherSessions);
}

TEST_F(NameOwnerTest, WhatCannotBeToldCountsAsThisOne) {
    EXPECT_EQ(judge("/usr/bin/curtain", {}), NameOwner::thisSessions);
    EXPECT_EQ(judge("", {"DISPLAY=:1"}), NameOwner::thisSessions);
    EXPECT_EQ(judge("/usr/bin/xdg-dbus-proxy", {"DISPLAY=:2"}), NameOwner::thisSessions);
}

} // namespace
