#pragma once

#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// An app that runs out of a single file.
struct AppImage {
    std::string file;
    /// The id, without suffix, of the desktop entry that the image carries; empty when it has none.
    std::string desktopEntryId;

    bool operator==(const AppImage&) const = default;
};

/// What the runtime of an AppImage tells the programs of the image in their environment
/// (https://docs.appimage.org/packaging-guide/environment-variables.html).
class AppImageRuntime {
public:
    explicit AppImageRuntime(const ProcessTable& processes) : processes_(processes) {}

    /// Absent also for a program of the system that a program of the image started.
    std::optional<AppImage> image(std::uint32_t process) const;

private:
    const ProcessTable& processes_;
};

} // namespace LinuxPlatform
