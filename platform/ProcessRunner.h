#pragma once

#include <string>
#include <vector>

namespace Platform {

/// Runs programs to their end.
class ProcessRunner {
public:
    virtual ~ProcessRunner() = default;

    /// Starts the program at `path` without a shell, waits until it ends and returns what it wrote to its
    /// standard output. Empty when it cannot be started or its output is not UTF-8. The wait has a deadline.
    virtual std::string run(const std::string& path, const std::vector<std::string>& arguments) = 0;
};

} // namespace Platform
