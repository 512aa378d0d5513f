#include "Curtain/WorkspaceObserver.h"

namespace Curtain {

WorkspaceObserver::WorkspaceObserver(Platform::Workspace& workspace) : workspace_(workspace) {}

void WorkspaceObserver::start() {
    using Platform::WorkspaceNotification;
    for (const auto notification :
         {WorkspaceNotification::didActivateApplication, WorkspaceNotification::didLaunchApplication}) {
        tokens_.push_back(workspace_.addObserver(
            notification, [this](const auto& application) { appAppeared(application.get()); }));
    }
}

void WorkspaceObserver::appAppeared(const Platform::RunningApplication* application) const {
    const auto bundleID = application != nullptr ? application->bundleIdentifier() : std::nullopt;
    if (bundleID && onAppAppeared) {
        onAppAppeared(*bundleID);
    }
}

} // namespace Curtain
