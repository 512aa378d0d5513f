#include "platform/linux/SessionWindows.h"

#include "platform/linux/windows/ListedWindowSystem.h"
#include "platform/linux/windows/NoWindowSystem.h"
#include "platform/linux/windows/i3/I3WindowSystem.h"
#include "platform/linux/windows/x11/X11WindowSystem.h"

#include <utility>

namespace LinuxPlatform {

std::unique_ptr<WindowSystem> windowsOfSession(const SessionEnvironment& environment, X11Connection* x11,
                                               Platform::MainQueue& queue,
                                               std::optional<EarlierValue> takenWindows, Platform::Log* log) {
    using Platform::HidingObstacle;
    if (!environment.i3Socket.empty() && !environment.isWayland()) {
        return std::make_unique<I3WindowSystem>(
            environment.i3Socket, queue,
            x11 != nullptr ? std::make_unique<X11WindowSystem>(*x11, queue) : nullptr,
            HidingObstacle::windowManagerIgnoresHiding, std::move(takenWindows), log);
    }
    if (x11 == nullptr) {
        return std::make_unique<NoWindowSystem>(environment.isWayland() ? HidingObstacle::waylandSession
                                                                        : HidingObstacle::noWindowManager);
    }
    auto windows = std::make_unique<X11WindowSystem>(*x11, queue);
    if (environment.isWayland()) {
        return std::make_unique<ListedWindowSystem>(std::move(windows), HidingObstacle::waylandSession,
                                                    false);
    }
    // It has no state in which a window is put away, and hides only what it is told over its socket.
    if (environment.windowManager == "i3") {
        return std::make_unique<ListedWindowSystem>(std::move(windows),
                                                    HidingObstacle::windowManagerIgnoresHiding, true);
    }
    return windows;
}

} // namespace LinuxPlatform
