#include "platform/linux/SessionWindows.h"

#include "platform/linux/windows/ListedWindowSystem.h"
#include "platform/linux/windows/NoWindowSystem.h"
#include "platform/linux/windows/x11/X11WindowSystem.h"

#include <utility>

namespace LinuxPlatform {

std::unique_ptr<WindowSystem> windowsOfSession(const SessionEnvironment& environment, X11Connection* x11,
                                               Platform::MainQueue& queue) {
    using Platform::HidingObstacle;
    if (x11 == nullptr) {
        return std::make_unique<NoWindowSystem>(environment.isWayland() ? HidingObstacle::waylandSession
                                                                        : HidingObstacle::noWindowManager);
    }
    auto windows = std::make_unique<X11WindowSystem>(*x11, queue);
    if (environment.isWayland()) {
        return std::make_unique<ListedWindowSystem>(std::move(windows), HidingObstacle::waylandSession,
                                                    false);
    }
    // It has no state in which a window is put away.
    if (environment.windowManager == "i3") {
        return std::make_unique<ListedWindowSystem>(std::move(windows),
                                                    HidingObstacle::windowManagerIgnoresHiding, true);
    }
    return windows;
}

} // namespace LinuxPlatform
