#pragma once

#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// What GLib's launcher leaves in the environment of the programs that it starts from desktop entries.
class LaunchEnvironment {
public:
    explicit LaunchEnvironment(const ProcessTable& processes) : processes_(processes) {}

    /// The path of the desktop entry from which this very process was launched. Programs inherit the
    /// environment of whoever starts them, and what was meant for another process counts for nothing.
    std::optional<std::string> desktopFile(std::uint32_t process) const;

private:
    const ProcessTable& processes_;
};

} // namespace LinuxPlatform
