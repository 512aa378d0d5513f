#pragma once

#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/apps/ProcessTable.h"

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

struct AppIdentifier {
    std::string bundleIdentifier;
    std::string localizedName;

    bool operator==(const AppIdentifier&) const = default;
};

/// Finds out which app a window belongs to.
class AppIdentity {
public:
    /// `entries` outlives this object.
    AppIdentity(DesktopEntries& entries, ProcessTable processes);

    /// The app's desktop entry if it has one; otherwise a stable identifier of the program's own. Absent for
    /// a window that says nothing at all.
    std::optional<AppIdentifier> identify(const WindowHints& hints);

private:
    const DesktopEntry* entryNamed(std::string_view idOrPath);
    const DesktopEntry* entryForClass(const WindowHints& hints);
    const DesktopEntry* entryFor(const WindowHints& hints, const std::optional<std::string>& program);

    DesktopEntries& entries_;
    ProcessTable processes_;
};

} // namespace LinuxPlatform
