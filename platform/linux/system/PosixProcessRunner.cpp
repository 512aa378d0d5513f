#include "platform/linux/system/PosixProcessRunner.h"

#include "core/Utf8.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How often a program that keeps its output open, or has closed it early, is looked after.
constexpr milliseconds glance{5};
/// Only a program that is stuck in the kernel needs longer.
constexpr milliseconds timeToDie{100};

class Pipe {
public:
    Pipe() {
        if (::pipe2(ends_.data(), O_CLOEXEC) == 0) {
            ::fcntl(ends_[0], F_SETFL, O_NONBLOCK);
        }
    }
    ~Pipe() {
        closeEnd(ends_[0]);
        closeEnd(ends_[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    bool isOpen() const { return ends_[0] >= 0; }
    int reader() const { return ends_[0]; }
    int writer() const { return ends_[1]; }
    void closeReader() { closeEnd(ends_[0]); }
    void closeWriter() { closeEnd(ends_[1]); }

private:
    static void closeEnd(int& end) {
        if (end >= 0) {
            ::close(std::exchange(end, -1));
        }
    }

    std::array<int, 2> ends_{-1, -1};
};

/// What the program gets to see: no signal handling and no open file of ours.
class SpawnSettings {
public:
    explicit SpawnSettings(int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_,
                                 POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    std::optional<pid_t> spawn(const std::string& path, const std::vector<std::string>& arguments) const {
        std::vector<std::string> words{path};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        pointers.reserve(words.size() + 1);
        for (auto& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        pid_t pid = 0;
        const auto failure =
            ::posix_spawn(&pid, path.c_str(), &actions_, &attributes_, pointers.data(), environ);
        return failure == 0 ? std::optional(pid) : std::nullopt;
    }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

bool hasEnded(pid_t pid) {
    const auto result = ::waitpid(pid, nullptr, WNOHANG);
    // Somebody else may have collected it.
    return result == pid || (result < 0 && errno == ECHILD);
}

/// Takes what is in the pipe; true at its end.
bool drain(const Pipe& pipe, std::string& output) {
    std::array<char, 65536> block;
    while (output.size() <= PosixProcessRunner::longestOutput) {
        const auto count = ::read(pipe.reader(), block.data(), block.size());
        if (count == 0) {
            return true;
        }
        if (count < 0 && errno != EINTR) {
            return errno != EAGAIN;
        }
        output.append(block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

/// Absent when the program did not come to its end.
std::optional<std::string> outputOf(pid_t pid, Pipe& pipe, Clock::time_point deadline) {
    std::string output;
    for (;;) {
        const bool isOver = hasEnded(pid);
        // Whatever an ended program has said lies in the pipe.
        if (pipe.isOpen() && drain(pipe, output)) {
            pipe.closeReader();
        }
        if (output.size() > PosixProcessRunner::longestOutput) {
            return std::nullopt;
        }
        if (isOver) {
            return output;
        }
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            return std::nullopt;
        }
        // A descriptor of -1 is passed over, and the call becomes a short rest.
        pollfd readable{pipe.reader(), POLLIN, 0};
        ::poll(&readable, 1, static_cast<int>(std::min(left, glance).count()));
    }
}

} // namespace

std::string PosixProcessRunner::run(const std::string& path, const std::vector<std::string>& arguments) {
    collectKilled();
    const auto deadline = Clock::now() + deadline_;
    Pipe pipe;
    if (!pipe.isOpen()) {
        return {};
    }
    const auto pid = SpawnSettings(pipe.writer()).spawn(path, arguments);
    pipe.closeWriter();
    if (!pid) {
        return {};
    }
    auto output = outputOf(*pid, pipe, deadline);
    if (!output) {
        kill(*pid);
    }
    return output && CurtainCore::isUtf8(*output) ? std::move(*output) : std::string();
}

void PosixProcessRunner::kill(pid_t pid) {
    ::kill(-pid, SIGKILL);
    for (const auto patience = Clock::now() + timeToDie; Clock::now() < patience;
         ::poll(nullptr, 0, static_cast<int>(glance.count()))) {
        if (hasEnded(pid)) {
            return;
        }
    }
    killed_.push_back(pid);
}

void PosixProcessRunner::collectKilled() {
    std::erase_if(killed_, hasEnded);
}

} // namespace LinuxPlatform
