#pragma once

#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// What Flatpak tells every program in a sandbox about itself, in the file .flatpak-info of the sandbox's
/// root (flatpak-metadata(5)).
class FlatpakSandbox {
public:
    explicit FlatpakSandbox(const ProcessTable& processes) : processes_(processes) {}

    /// The id of the app in whose sandbox the process is.
    std::optional<std::string> app(std::uint32_t process) const;

private:
    const ProcessTable& processes_;
};

} // namespace LinuxPlatform
