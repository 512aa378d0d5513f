#pragma once

#include "platform/Subscribers.h"
#include "platform/Workspace.h"
#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/windows/WindowSystem.h"
#include "platform/linux/workspace/AppInstances.h"

#include <map>
#include <memory>

namespace LinuxPlatform {

/// The apps of this session, made up from its windows, the installed desktop entries and the units in which
/// they run.
class LinuxWorkspace : public Platform::Workspace {
public:
    /// All outlive the workspace; handles it gave out may outlive it. The app with the identifier of
    /// `thisProgram` is none of the workspace's. `hiddenWindows` is where it is written down what is hidden.
    LinuxWorkspace(WindowSystem& windowSystem, AppIdentity& identity, DesktopEntries& entries,
                   ScopedApps& scopedApps, Platform::MainQueue& mainQueue, std::string thisProgram = {},
                   HiddenWindowsRecord hiddenWindows = HiddenWindowsRecord());

    Platform::RunningApplications runningApplications() override;
    bool knowsEveryWindow() override;
    Platform::RunningApplications
    runningApplicationsWithBundleIdentifier(const std::string& bundleID) override;
    Platform::Subscription addObserver(Platform::WorkspaceNotification notification,
                                       Observer observer) override;
    std::optional<std::string> urlForApplicationWithBundleIdentifier(const std::string& bundleID) override;
    std::optional<std::string> urlForApplicationToOpen(const std::string& url) override;
    std::optional<Platform::Image> iconForFile(const std::string& path) override;

    std::vector<WindowId> windowsOf(const std::string& bundleID);
    /// The bundle identifier of the app that the window belongs to; absent for a window that is not listed.
    std::optional<std::string> appOf(WindowId window);

    /// Tells the observers of activations once more of every app that can be seen.
    void announceVisible();

private:
    void handleEvent(WindowEvent event, const Window& window);
    /// Absent for a window of this program, too.
    std::optional<AppInstanceKey> owning(WindowId window);
    std::shared_ptr<Platform::RunningApplication> handleFor(const AppInstanceKey& key) const;

    std::string thisProgram_;
    WindowSystem& windowSystem_;
    DesktopEntries& entries_;
    std::shared_ptr<AppInstances> instances_;
    std::map<Platform::WorkspaceNotification,
             Platform::Subscribers<std::shared_ptr<Platform::RunningApplication>>>
        observers_;
    Platform::Subscription windowEvents_;
};

} // namespace LinuxPlatform
