#pragma once

#include "platform/linux/session/SessionEnvironment.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// What an X server that answers tells of itself.
struct XServerAnswer {
    /// Whether it serves the X11 programs of a Wayland compositor; absent where nothing of it tells.
    std::optional<bool> isXWayland;
    /// As the window manager calls itself.
    std::optional<std::string> windowManager;
    /// Where i3 says that it listens; empty without one.
    std::filesystem::path i3Socket;
};

/// A Wayland compositor that answers.
struct CompositorAnswer {
    /// Who listens; absent where the kernel does not know.
    std::optional<std::uint32_t> process;
};

/// What i3 or sway answers.
struct I3Answer {
    /// "i3" or "sway".
    std::string name;
    std::optional<std::uint32_t> process;
};

/// Everybody who can be asked which session this is. No function waits without a deadline; who does not
/// answer in time does not answer.
struct SessionSources {
    /// Empty where it is not set.
    std::function<std::string(const std::string& name)> variable;
    std::function<std::optional<XServerAnswer>(const std::string& display)> askXServer;
    std::function<std::optional<CompositorAnswer>(const std::filesystem::path& socket)> askCompositor;
    std::function<std::optional<I3Answer>(const std::filesystem::path& socket)> askI3;
    /// Those of the names that somebody has on the session bus, each with its process.
    std::function<std::map<std::string, std::uint32_t>(const std::vector<std::string>& names)> busOwners;
    /// The name of a process's program; empty where it is not known.
    std::function<std::string(std::uint32_t process)> programName;
};

/// Asks once. What the servers say comes first: an X server of a Wayland compositor is recognised also
/// where no variable names that compositor, and a variable that names nobody who answers counts for nothing.
SessionEnvironment probeSession(const SessionSources& sources);

/// How long those who are asked may take.
struct SessionPatience {
    /// A compositor starts its X server when it is asked for the first time.
    std::chrono::milliseconds xServer{5000};
    std::chrono::milliseconds socket{2000};
    std::chrono::milliseconds bus{1000};
};

/// The servers and variables of this process.
SessionSources sourcesOfThisSession(const SessionPatience& patience = {});

} // namespace LinuxPlatform
