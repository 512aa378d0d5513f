#pragma once

#include "platform/ProcessRunner.h"

#include <chrono>
#include <vector>

#include <sys/types.h>

namespace LinuxPlatform {

/// Starts real programs, with an empty standard input and their complaints thrown away. One that has not
/// ended by the deadline is killed, with its children, and has said nothing; so has one that talks without
/// end.
class PosixProcessRunner : public Platform::ProcessRunner {
public:
    static constexpr std::size_t longestOutput = std::size_t{16} << 20U;

    explicit PosixProcessRunner(std::chrono::milliseconds deadline = std::chrono::seconds(2))
        : deadline_(deadline) {}

    std::string run(const std::string& path, const std::vector<std::string>& arguments) override;

private:
    void kill(pid_t pid);
    void collectKilled();

    std::chrono::milliseconds deadline_;
    /// Killed, but not gone yet.
    std::vector<pid_t> killed_;
};

} // namespace LinuxPlatform
