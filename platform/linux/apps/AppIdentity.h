#pragma once

#include "platform/linux/apps/AppImageRuntime.h"
#include "platform/linux/apps/AppScope.h"
#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/apps/FlatpakSandbox.h"
#include "platform/linux/apps/LaunchEnvironment.h"
#include "platform/linux/apps/ProgramNames.h"
#include "platform/linux/apps/SnapConfinement.h"
#include "platform/linux/system/ProcessTable.h"
#include "platform/linux/windows/WindowHints.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

struct AppIdentifier {
    std::string bundleIdentifier;
    std::string localizedName;

    bool operator==(const AppIdentifier&) const = default;
};

AppIdentifier identifierOf(const DesktopEntry& entry);

/// Finds out which app a window belongs to. Every source of knowledge is a class of its own; here they are
/// asked in turn, those first that say the same of a program however it was started.
class AppIdentity {
public:
    /// `entries` outlives this object.
    AppIdentity(DesktopEntries& entries, ProcessTable processes);
    AppIdentity(const AppIdentity&) = delete;
    AppIdentity& operator=(const AppIdentity&) = delete;

    /// The app's desktop entry if it has one; otherwise a stable identifier of the program's own. Absent for
    /// a window that says nothing at all.
    std::optional<AppIdentifier> identify(const WindowHints& hints);

private:
    /// Where a process cannot be but an app's own.
    struct Sandbox {
        /// As in `DesktopEntry::sandbox`.
        std::string name;
        std::string desktopEntryId;
    };

    std::optional<Sandbox> sandboxOf(std::uint32_t process) const;
    /// The process, and those that started it and do nothing else.
    std::vector<std::uint32_t> originsOf(std::uint32_t process) const;

    const DesktopEntry* entryFor(const WindowHints& hints, const std::optional<Sandbox>& sandbox);
    const DesktopEntry* entryForHints(const WindowHints& hints, const std::optional<Sandbox>& sandbox);
    const DesktopEntry* entryForClass(const WindowHints& hints);
    const DesktopEntry* entryForProcess(std::uint32_t process);
    const DesktopEntry* entryForProgram(const std::string& name);
    const DesktopEntry* entryNamed(std::string_view idOrPath);
    /// For a program without an entry.
    std::string ownName(const WindowHints& hints) const;

    DesktopEntries& entries_;
    ProcessTable processes_;
    FlatpakSandbox flatpak_{processes_};
    SnapConfinement snaps_{processes_};
    AppImageRuntime appImages_{processes_};
    ProgramNames programs_{processes_};
    LaunchEnvironment launches_{processes_};
    AppScope scopes_{processes_};
};

} // namespace LinuxPlatform
