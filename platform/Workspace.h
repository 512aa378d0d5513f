#pragma once

#include "platform/Image.h"
#include "platform/Subscription.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

/// How an app shows up on the desktop: in the task list, only with a small presence such as a tray icon, or
/// not at all.
enum class ActivationPolicy { regular, accessory, prohibited };

enum class ActivationOptions : unsigned { none = 0, allWindows = 1, ignoringOtherApps = 2 };

/// One running instance of an app. A handle: once the instance is gone, its answers are those of an app
/// without windows and its operations do nothing.
class RunningApplication {
public:
    virtual ~RunningApplication() = default;

    virtual std::optional<std::string> bundleIdentifier() const = 0;
    virtual std::optional<std::string> localizedName() const = 0;
    virtual ActivationPolicy activationPolicy() const = 0;
    /// Whether none of its windows can be seen. A window on another workspace counts as visible.
    virtual bool isHidden() const = 0;

    /// Takes every window off the screen. Asked for, not waited for.
    virtual void hide() = 0;
    /// Brings back the windows that `hide` took away, as they were; all of them if it took none of the app's,
    /// other instances included.
    virtual void unhide() = 0;
    virtual void activate(ActivationOptions options) = 0;
};

using RunningApplications = std::vector<std::shared_ptr<RunningApplication>>;

enum class WorkspaceNotification { didActivateApplication, didLaunchApplication };

/// The apps of this desktop. Main thread only.
class Workspace {
public:
    /// Receives the app that the notification is about, null when it is not known.
    using Observer = std::function<void(const std::shared_ptr<RunningApplication>&)>;

    virtual ~Workspace() = default;

    /// Instances with a visible window come before those without, in a stable order.
    virtual RunningApplications runningApplications() = 0;
    /// Whether every window of the session is known. Where it is not, an app without a visible window may be
    /// in full view all the same, and one that is not listed may be running.
    virtual bool knowsEveryWindow() = 0;
    virtual RunningApplications runningApplicationsWithBundleIdentifier(const std::string& bundleID) = 0;

    /// `observer` is called on the main queue, never from inside another call to this interface.
    virtual Subscription addObserver(WorkspaceNotification notification, Observer observer) = 0;

    /// The path of the app's bundle; absent when no app with this identifier is known.
    virtual std::optional<std::string> urlForApplicationWithBundleIdentifier(const std::string& bundleID) = 0;
    /// The path of the bundle of an app that opens such addresses; absent when there is none.
    virtual std::optional<std::string> urlForApplicationToOpen(const std::string& url) = 0;
    virtual std::optional<Image> iconForFile(const std::string& path) = 0;
};

} // namespace Platform
