#include "Curtain/PrivateAppsInspector.h"

namespace Curtain::PrivateAppsInspector {
namespace {

PrivateAppVisibility visibilityOf(Platform::Workspace& workspace, const CurtainCore::TargetApp& target) {
    const auto instances = workspace.runningApplicationsWithBundleIdentifier(target.bundleID);
    const bool isSeen = !instances.empty() && !instances.front()->isHidden();
    if (!isSeen && !workspace.knowsEveryWindow()) {
        return PrivateAppVisibility::unknown;
    }
    if (instances.empty()) {
        return PrivateAppVisibility::notRunning;
    }
    return isSeen ? PrivateAppVisibility::visible : PrivateAppVisibility::hidden;
}

} // namespace

PrivateAppsReport report(Platform::Workspace& workspace, const std::vector<CurtainCore::TargetApp>& targets) {
    PrivateAppsReport report;
    for (const auto& target : targets) {
        ++report.total;
        switch (visibilityOf(workspace, target)) {
        case PrivateAppVisibility::visible:
            ++report.running;
            ++report.visible;
            break;
        case PrivateAppVisibility::hidden:
            ++report.running;
            ++report.hidden;
            break;
        case PrivateAppVisibility::notRunning:
        case PrivateAppVisibility::notInstalled:
            break;
        case PrivateAppVisibility::unknown:
            ++report.unknown;
            break;
        }
    }
    return report;
}

std::vector<PrivateAppRow> rows(Platform::Workspace& workspace,
                                const std::vector<CurtainCore::TargetApp>& targets) {
    std::vector<PrivateAppRow> rows;
    rows.reserve(targets.size());
    for (const auto& target : targets) {
        rows.push_back({target.bundleID, target.displayName, visibilityOf(workspace, target)});
    }
    return rows;
}

} // namespace Curtain::PrivateAppsInspector
