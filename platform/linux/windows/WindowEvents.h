#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/Subscribers.h"
#include "platform/linux/windows/LeavingWindows.h"
#include "platform/linux/windows/WindowSystem.h"

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace LinuxPlatform {

/// What happens to windows, told in the next turn of the main queue and with the windows as they are then. Of
/// one that is gone by then nothing is told, and of one that was asked to hide no activation. Main thread
/// only.
class WindowEvents {
public:
    /// Absent where there is no such window, or none to tell of.
    using FindWindow = std::function<std::optional<Window>(WindowId)>;

    /// `queue` and `leaving` outlive this object.
    WindowEvents(Platform::MainQueue& queue, const LeavingWindows& leaving, FindWindow find);

    void announce(WindowEvent event, WindowId window);
    Platform::Subscription addHandler(WindowSystem::EventHandler handler);

private:
    void deliver();

    Platform::MainQueue& queue_;
    const LeavingWindows& leaving_;
    FindWindow find_;
    std::vector<std::pair<WindowEvent, WindowId>> undelivered_;
    Platform::Subscribers<WindowEvent, Window> handlers_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
