#include "Curtain/SystemAppHiding.h"

namespace Curtain {

SystemAppHiding::SystemAppHiding(Platform::Workspace& workspace) : workspace_(workspace) {}

bool SystemAppHiding::isRunning(const std::string& bundleID) {
    return !workspace_.runningApplicationsWithBundleIdentifier(bundleID).empty();
}

std::optional<bool> SystemAppHiding::isHidden(const std::string& bundleID) {
    const auto instances = workspace_.runningApplicationsWithBundleIdentifier(bundleID);
    return instances.empty() ? std::nullopt : std::optional(instances.front()->isHidden());
}

void SystemAppHiding::hide(const std::string& bundleID) {
    for (const auto& instance : workspace_.runningApplicationsWithBundleIdentifier(bundleID)) {
        instance->hide();
    }
}

void SystemAppHiding::unhide(const std::string& bundleID) {
    for (const auto& instance : workspace_.runningApplicationsWithBundleIdentifier(bundleID)) {
        instance->unhide();
        instance->activate(Platform::ActivationOptions::ignoringOtherApps);
    }
}

} // namespace Curtain
