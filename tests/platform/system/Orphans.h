#pragma once

#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

/// Takes in the programs that others have started and left: they become children of this process, so that a
/// test can end them although it never learnt of them.
class Orphans {
public:
    Orphans() { prctl(PR_SET_CHILD_SUBREAPER, 1); }
    ~Orphans() { prctl(PR_SET_CHILD_SUBREAPER, 0); }
    Orphans(const Orphans&) = delete;
    Orphans& operator=(const Orphans&) = delete;

    /// Asks those there are to end, and forgets those that have; returns whether none is left. The children
    /// that the test has started by itself count, too.
    static bool haveEnded() {
        const auto all = children();
        for (const auto child : all) {
            ::kill(child, SIGTERM);
            waitpid(child, nullptr, WNOHANG);
        }
        return all.empty();
    }

private:
    static std::vector<pid_t> children() {
        std::vector<pid_t> found;
        for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
            std::ifstream file(thread.path() / "children");
            for (pid_t child = 0; file >> child;) {
                found.push_back(child);
            }
        }
        return found;
    }
};

} // namespace TestSupport
