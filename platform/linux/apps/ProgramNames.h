#pragma once

#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// The names under which the program that a process runs may be known.
class ProgramNames {
public:
    explicit ProgramNames(const ProcessTable& processes) : processes_(processes) {}

    /// The surest first, each once. Of an interpreter, that of the program that it interprets.
    std::vector<std::string> of(std::uint32_t process) const;

private:
    const ProcessTable& processes_;
};

} // namespace LinuxPlatform
