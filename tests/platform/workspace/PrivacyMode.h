#pragma once

#include "Curtain/SystemAppHiding.h"
#include "Curtain/WorkspaceObserver.h"
#include "core/HideEngine.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/workspace/LinuxWorkspace.h"

#include <string>

namespace PlatformTests {

/// Privacy mode over the windows of a real display. Apps are known by their window classes in lower case.
struct PrivacyMode {
    LinuxPlatform::DesktopEntries entries{{}};
    LinuxPlatform::AppIdentity identity{entries, LinuxPlatform::ProcessTable("/nonexistent")};
    LinuxPlatform::ScopedApps scopedApps;
    LinuxPlatform::LinuxWorkspace workspace;
    Curtain::SystemAppHiding hiding{workspace};
    CurtainCore::HideEngine engine{hiding};
    Curtain::WorkspaceObserver observer{workspace};
    Platform::Lifetime lifetime;

    PrivacyMode(LinuxPlatform::WindowSystem& windows, Platform::MainQueue& mainQueue)
        : scopedApps(entries, mainQueue, LinuxPlatform::ProcessTable("/nonexistent")),
          workspace(windows, identity, entries, scopedApps, mainQueue) {
        observer.onAppAppeared = [this, &mainQueue](const std::string& bundleID) {
            mainQueue.asyncAfter(Platform::MainQueue::Seconds(0.2),
                                 lifetime.weak([this, bundleID] { engine.reapply(bundleID); }));
        };
        observer.start();
    }
};

} // namespace PlatformTests
