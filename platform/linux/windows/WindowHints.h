#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace LinuxPlatform {

/// What a window says about the app that it belongs to; empty where it says nothing.
struct WindowHints {
    /// The two halves of the window's class, the more particular one first.
    std::string instanceName;
    std::string className;
    /// Desktop-entry ids, with or without suffix, or paths.
    std::string desktopFile;
    std::string applicationId;
    std::optional<std::uint32_t> process;

    bool operator==(const WindowHints&) const = default;
};

} // namespace LinuxPlatform
