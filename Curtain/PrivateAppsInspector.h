#pragma once

#include "core/Preferences.h"
#include "platform/Workspace.h"

#include <string>
#include <vector>

namespace Curtain {

enum class PrivateAppVisibility {
    visible,
    hidden,
    notRunning,
    /// Not running, and certainly no longer installed; for who knows what is installed.
    notInstalled,
    /// Not seen, in a session that does not show all of its windows.
    unknown,
};

struct PrivateAppRow {
    std::string bundleID;
    std::string name;
    PrivateAppVisibility visibility = PrivateAppVisibility::notRunning;

    const std::string& id() const { return bundleID; }
    bool operator==(const PrivateAppRow&) const = default;
};

/// Counts of private apps, duplicates counted; `running` is the sum of `visible` and `hidden`. One that is
/// unknown may run or not.
struct PrivateAppsReport {
    int total = 0;
    int running = 0;
    int visible = 0;
    int hidden = 0;
    int unknown = 0;

    bool operator==(const PrivateAppsReport&) const = default;
};

/// Which private apps run, and which of them can be seen, at the time of the call.
namespace PrivateAppsInspector {

PrivateAppsReport report(Platform::Workspace& workspace, const std::vector<CurtainCore::TargetApp>& targets);
/// One row a target, in the same order.
std::vector<PrivateAppRow> rows(Platform::Workspace& workspace,
                                const std::vector<CurtainCore::TargetApp>& targets);

} // namespace PrivateAppsInspector

} // namespace Curtain
