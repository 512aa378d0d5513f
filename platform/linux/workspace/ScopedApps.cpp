#include "platform/linux/workspace/ScopedApps.h"

#include "platform/linux/apps/AppScope.h"

#include <algorithm>
#include <map>

namespace LinuxPlatform {
namespace {

/// Looking through the processes takes some milliseconds.
constexpr Platform::MainQueue::Seconds freshness{0.5};

} // namespace

ScopedApps::ScopedApps(DesktopEntries& entries, Platform::MainQueue& mainQueue, ProcessTable processes)
    : entries_(entries),
      mainQueue_(mainQueue),
      processes_(std::move(processes)) {}

const std::vector<ScopedApp>& ScopedApps::running() {
    const auto now = mainQueue_.now();
    if (!lookedAt_ || now - *lookedAt_ >= freshness) {
        auto found = find();
        lookedAt_ = mainQueue_.now();
        if (found != running_) {
            running_ = std::move(found);
            ++generation_;
        }
    }
    return running_;
}

std::vector<ScopedApp> ScopedApps::find() {
    // Without a process manager nothing is in a group of its own.
    if (processes_.controlGroupOfSelf().size() <= 1) {
        return {};
    }
    std::map<std::string, std::vector<std::uint32_t>> processesOfGroups;
    for (const auto process : processes_.ownProcesses()) {
        if (auto group = processes_.controlGroup(process); group.size() > 1) {
            processesOfGroups[std::move(group)].push_back(process);
        }
    }
    std::vector<ScopedApp> apps;
    for (auto& [group, processes] : processesOfGroups) {
        const auto unit = AppUnit::ofControlGroup(group);
        const auto* const entry = unit ? entries_.withOneOfIds(unit->desktopEntryIds) : nullptr;
        if (entry != nullptr) {
            const auto leader = AppScope(processes_).leader(*unit, processes);
            apps.push_back({identifierOf(*entry), leader, std::move(processes)});
        }
    }
    std::ranges::sort(apps, {}, &ScopedApp::leader);
    return apps;
}

} // namespace LinuxPlatform
