#pragma once

#include <string>

namespace LinuxPlatform {

/// A program in a snap.
struct SnapApp {
    std::string snap;
    /// As the snap calls it.
    std::string app;

    bool operator==(const SnapApp&) const = default;

    /// As snapd names the program's desktop entry.
    std::string desktopEntryId() const { return snap + "_" + app; }
};

} // namespace LinuxPlatform
