#pragma once

#include "platform/AppShield.h"
#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/shield/X11Covers.h"
#include "platform/linux/windows/WindowHints.h"
#include "platform/linux/windows/WindowId.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Covers the windows of apps in an X11 session. The covers have a thread and a connection of their own,
/// opened beforehand, which follow nothing while there is nothing to cover; whose a new window is, the main
/// thread says.
class X11AppShield : public Platform::AppShield {
public:
    struct Apps {
        /// The windows of an app that are known already.
        std::function<std::vector<WindowId>(const std::string& bundleID)> windowsOf;
        /// The bundle identifier of the app that a window belongs to, be it known already or not.
        std::function<std::optional<std::string>(WindowId window, const WindowHints& hints)> identify;
    };

    /// `mainQueue` outlives this object.
    X11AppShield(Apps apps, Platform::MainQueue& mainQueue);
    ~X11AppShield() override;

    void cover(const std::vector<std::string>& bundleIDs) override;

private:
    class Thread;

    void getReady();
    std::vector<xcb_window_t> knownWindows() const;
    void judge(const std::vector<X11Covers::Question>& questions);

    Apps apps_;
    Platform::MainQueue& mainQueue_;
    std::vector<std::string> covered_;
    /// Null until the first turn of the main queue.
    std::unique_ptr<Thread> thread_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
