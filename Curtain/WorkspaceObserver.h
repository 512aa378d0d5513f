#pragma once

#include "platform/Workspace.h"

#include <functional>
#include <string>
#include <vector>

namespace Curtain {

/// Tells the bundle identifier of every app that is launched or brought to the front. An app that does both
/// is told twice.
class WorkspaceObserver {
public:
    using AppAppeared = std::function<void(const std::string& bundleID)>;

    /// `workspace` outlives the observer.
    explicit WorkspaceObserver(Platform::Workspace& workspace);

    /// Set before `start`; called on the main queue.
    AppAppeared onAppAppeared;

    /// Called once: a second call registers everything twice.
    void start();

private:
    void appAppeared(const Platform::RunningApplication* application) const;

    Platform::Workspace& workspace_;
    std::vector<Platform::Subscription> tokens_;
};

} // namespace Curtain
