#include "platform/linux/system/PosixProcessRunner.h"

#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include <fcntl.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using LinuxPlatform::PosixProcessRunner;
using std::chrono::milliseconds;
using testing::SizeIs;

/// More than any program of these tests needs, however busy the machine.
constexpr std::chrono::seconds generous{30};

struct PosixProcessRunnerTest : testing::Test {
    PosixProcessRunner runner{generous};

    std::string shell(const std::string& script) { return runner.run("/bin/sh", {"-c", script}); }
};

TEST_F(PosixProcessRunnerTest, ReturnsTheStandardOutput) {
    EXPECT_EQ(runner.run("/bin/echo", {"0"}), "0\n");
    EXPECT_EQ(shell("echo out; echo err >&2"), "out\n");
    EXPECT_EQ(shell("printf ''"), "");
}

TEST_F(PosixProcessRunnerTest, HandsTheArgumentsOverAsTheyAre) {
    EXPECT_EQ(runner.run("/usr/bin/printf", {"[%s]", "a b", "$HOME", "*", "", "\"'\n", "--"}),
              "[a b][$HOME][*][][\"'\n][--]");
}

TEST_F(PosixProcessRunnerTest, TheExitStatusDoesNotMatter) {
    EXPECT_EQ(shell("echo said; exit 3"), "said\n");
    EXPECT_EQ(shell("echo said; kill -KILL $$"), "said\n");
}

TEST_F(PosixProcessRunnerTest, WhatCannotBeStartedSaysNothing) {
    const TestSupport::TemporaryFolder folder;
    const auto file = folder.path() / "no program";
    EXPECT_EQ(runner.run(file.string(), {}), "");
    TestSupport::writeFile(file, "#!/bin/sh\necho started\n");
    EXPECT_EQ(runner.run(file.string(), {}), "");
    EXPECT_EQ(runner.run(folder.path().string(), {}), "");
    EXPECT_EQ(runner.run("", {}), "");
    // The search path is for shells.
    EXPECT_EQ(runner.run("echo", {"0"}), "");
}

TEST_F(PosixProcessRunnerTest, UndecodableOutputIsEmpty) {
    EXPECT_EQ(shell("printf '0\\377'"), "");
    EXPECT_EQ(shell("printf '\\303\\251'"), "é");
    EXPECT_EQ(shell("printf '0\\0'"), std::string("0\0", 2));
}

TEST_F(PosixProcessRunnerTest, ReadsWhileTheProgramRuns) {
    // Far more than a pipe holds.
    EXPECT_THAT(shell("head -c 4000000 /dev/zero | tr '\\0' x"), SizeIs(4'000'000));
    EXPECT_EQ(shell("head -c 4000000 /dev/zero >&2; echo 0"), "0\n");
}

TEST_F(PosixProcessRunnerTest, WaitsForTheEndOfAProgramThatHasClosedItsOutput) {
    const TestSupport::TemporaryFolder folder;
    const auto mark = (folder.path() / "mark").string();
    EXPECT_EQ(shell("echo 0; exec >&-; sleep 0.3; echo done > '" + mark + "'"), "0\n");
    EXPECT_EQ(TestSupport::readFile(mark), "done\n");
}

TEST_F(PosixProcessRunnerTest, DoesNotWaitForWhatTheProgramLeftBehind) {
    const TestSupport::TemporaryFolder folder;
    // The one left behind holds the output open, and ends with the test.
    EXPECT_EQ(shell("(while [ -e '" + folder.path().string() + "' ]; do sleep 0.05; done) & echo 0"), "0\n");
}

TEST_F(PosixProcessRunnerTest, AProgramThatHangsIsKilledAtTheDeadline) {
    const TestSupport::TemporaryFolder folder;
    const auto pidFile = (folder.path() / "pid").string();
    PosixProcessRunner impatient(milliseconds(300));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(impatient.run("/bin/sh", {"-c", "echo 0; sleep 1000 & echo $! > '" + pidFile + "'; wait"}), "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, generous);
    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(300));
    const auto child = static_cast<pid_t>(std::stol(TestSupport::readFile(pidFile)));
    const auto isGone = [&] {
        const auto state = TestSupport::readFile("/proc/" + std::to_string(child) + "/stat");
        return ::kill(child, 0) != 0 || state.find(") Z ") != std::string::npos;
    };
    const auto deadline = std::chrono::steady_clock::now() + generous;
    while (!isGone() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(milliseconds(5));
    }
    EXPECT_TRUE(isGone());
}

TEST_F(PosixProcessRunnerTest, AProgramThatTalksWithoutEndHasSaidNothing) {
    EXPECT_EQ(runner.run("/usr/bin/yes", {}), "");
}

TEST_F(PosixProcessRunnerTest, KilledProgramsAreCollected) {
    PosixProcessRunner impatient(milliseconds(50));
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(impatient.run("/bin/sleep", {"1000"}), "");
    }
    const auto deadline = std::chrono::steady_clock::now() + generous;
    const auto hasChildren = [] { return ::waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT) == 0; };
    while (hasChildren() && std::chrono::steady_clock::now() < deadline) {
        impatient.run("/bin/true", {});
    }
    EXPECT_FALSE(hasChildren());
}

TEST_F(PosixProcessRunnerTest, TheProgramGetsNothingOfOurs) {
    const TestSupport::TemporaryFolder folder;
    const auto file = (folder.path() / "open").string();
    const int open = ::open(file.c_str(), O_RDWR | O_CREAT, 0600);
    const int elsewhere = ::fcntl(open, F_DUPFD, 100);
    EXPECT_EQ(shell("cat; ls /proc/$$/fd | sort -n | tail -n 1 | awk '{print ($1 < 100)}'"), "1\n");
    ::close(open);
    ::close(elsewhere);

    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &blocked, &before);
    EXPECT_EQ(shell("kill -TERM $$; echo survived"), "");
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace
