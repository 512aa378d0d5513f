#pragma once

#include "platform/MainQueue.h"
#include "platform/linux/apps/AppIdentity.h"
#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/system/ProcessTable.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace LinuxPlatform {

/// An installed app that the desktop started in a systemd unit of its own, whether it has windows or not.
struct ScopedApp {
    AppIdentifier identifier;
    /// The process for which the unit was made, or the oldest that is left.
    std::uint32_t leader = 0;
    /// In ascending order, the leader included.
    std::vector<std::uint32_t> processes;

    bool operator==(const ScopedApp&) const = default;
};

/// The apps that run in units of their own. Processes come and go without telling, so they are looked through
/// again when somebody asks, though not twice within a moment. Main thread only.
class ScopedApps {
public:
    /// Both outlive this object.
    ScopedApps(DesktopEntries& entries, Platform::MainQueue& mainQueue,
               ProcessTable processes = ProcessTable());

    /// In the order of their leaders; valid until the next call.
    const std::vector<ScopedApp>& running();
    /// Changes whenever `running` returned something new.
    std::uint64_t generation() const { return generation_; }

private:
    std::vector<ScopedApp> find();

    DesktopEntries& entries_;
    Platform::MainQueue& mainQueue_;
    ProcessTable processes_;
    std::optional<Platform::MainQueue::Seconds> lookedAt_;
    std::uint64_t generation_ = 0;
    std::vector<ScopedApp> running_;
};

} // namespace LinuxPlatform
