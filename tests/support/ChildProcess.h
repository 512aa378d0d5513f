#pragma once

#include <csignal>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

/// Another program, whose output is thrown away; it does not outlive this object.
class ChildProcess {
public:
    explicit ChildProcess(std::vector<std::string> command) {
        std::vector<char*> pointers;
        for (auto& argument : command) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        posix_spawn_file_actions_t actions{};
        posix_spawn_file_actions_init(&actions);
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
        }
        if (posix_spawnp(&pid_, pointers.front(), &actions, nullptr, pointers.data(), environ) != 0) {
            pid_ = 0;
        }
        posix_spawn_file_actions_destroy(&actions);
    }

    ~ChildProcess() { end(SIGKILL); }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// 0 once it has ended, or if it could not be started.
    pid_t id() const { return pid_; }

    /// Whether it has ended without being asked to. It stays to be waited for.
    bool hasEnded() const {
        siginfo_t info{};
        return pid_ == 0 ||
               (waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
                info.si_pid == pid_);
    }

    /// Sends the signal and waits for the end.
    void end(int signal) {
        if (const auto pid = std::exchange(pid_, 0); pid != 0) {
            ::kill(pid, signal);
            waitpid(pid, nullptr, 0);
        }
    }

    /// Waits for an end of its own accord; true if it did what it was for.
    bool succeeds() {
        int status = 0;
        const auto pid = std::exchange(pid_, 0);
        return pid != 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    pid_t pid_ = 0;
};

} // namespace TestSupport
