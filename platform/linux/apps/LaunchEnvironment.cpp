#include "platform/linux/apps/LaunchEnvironment.h"

namespace LinuxPlatform {

std::optional<std::string> LaunchEnvironment::desktopFile(std::uint32_t process) const {
    const auto launched = processes_.environmentVariable(process, "GIO_LAUNCHED_DESKTOP_FILE_PID");
    if (launched != std::to_string(process)) {
        return std::nullopt;
    }
    auto file = processes_.environmentVariable(process, "GIO_LAUNCHED_DESKTOP_FILE");
    return file && !file->empty() ? file : std::nullopt;
}

} // namespace LinuxPlatform
