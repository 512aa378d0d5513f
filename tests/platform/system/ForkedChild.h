#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

/// A copy of this process that runs one function and ends with status 0 if no expectation failed in it. To be
/// made while this process has a single thread.
class ForkedChild {
public:
    explicit ForkedChild(const std::function<void()>& body) {
        std::fflush(nullptr);
        process_ = fork();
        if (process_ == 0) {
            body();
            std::fflush(nullptr);
            _exit(testing::Test::HasFailure() ? 1 : 0);
        }
    }
    ~ForkedChild() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            wait();
        }
    }
    ForkedChild(const ForkedChild&) = delete;
    ForkedChild& operator=(const ForkedChild&) = delete;

    void kill(int signal) const { ::kill(process_, signal); }

    /// The status as waitpid gives it; -1 when it has been asked for before.
    int wait() {
        int status = -1;
        if (process_ > 0) {
            waitpid(process_, &status, 0);
            process_ = -1;
        }
        return status;
    }

private:
    pid_t process_ = -1;
};

/// Runs a function in a child process that permissions bind, which they do not when root runs the tests.
/// `folder` is made its own.
inline void runAsOrdinaryUser(const std::filesystem::path& folder, const std::function<void()>& body) {
    constexpr uid_t nobody = 65534;
    const bool isRoot = geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(chown(folder.c_str(), nobody, nobody), 0);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            ASSERT_EQ(lchown(entry.path().c_str(), nobody, nobody), 0);
        }
    }
    ForkedChild child([&] {
        if (isRoot) {
            ASSERT_EQ(setgroups(0, nullptr), 0);
            ASSERT_EQ(setresgid(nobody, nobody, nobody), 0);
            ASSERT_EQ(setresuid(nobody, nobody, nobody), 0);
        }
        body();
    });
    EXPECT_EQ(child.wait(), 0);
}

} // namespace TestSupport
