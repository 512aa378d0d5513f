#include "platform/linux/SessionWindows.h"

#include "platform/linux/system/RuntimeFolder.h"
#include "platform/linux/windows/ListedWindowSystem.h"
#include "platform/linux/windows/NoWindowSystem.h"
#include "platform/linux/windows/StandInWindowSystem.h"
#include "platform/linux/windows/gnome/GnomeShellProtocol.h"
#include "platform/linux/windows/gnome/GnomeWindowSystem.h"
#include "platform/linux/windows/i3/I3WindowSystem.h"
#include "platform/linux/windows/kwin/KWinWindowSystem.h"
#include "platform/linux/windows/toplevels/ToplevelWindowSystem.h"
#include "platform/linux/windows/x11/X11WindowSystem.h"

#include <QDBusConnection>

#include <glib.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace LinuxPlatform {
namespace {

bool isInFolder(const std::filesystem::path& folder) {
    std::error_code ignored;
    return std::filesystem::exists(folder / "gnome-shell/extensions" /
                                       GnomeShellProtocol::extensionUuid.toStdString() / "metadata.json",
                                   ignored);
}

/// Where GNOME Shell looks for extensions when a session begins.
bool isGnomeExtensionInstalled() {
    for (const auto* const* folder = g_get_system_data_dirs(); *folder != nullptr; ++folder) {
        if (isInFolder(*folder)) {
            return true;
        }
    }
    return isInFolder(g_get_user_data_dir());
}

/// Of others that speak the protocol it is not known before they have done it.
ToplevelWindowSystem::Minimising minimisingOf(const SessionEnvironment& environment) {
    return environment.windowManager == "labwc" ? ToplevelWindowSystem::Minimising::known
                                                : ToplevelWindowSystem::Minimising::untried;
}

} // namespace

bool isScriptedKWin(const SessionEnvironment& environment) {
    return environment.isWayland() && environment.windowManager == "KWin" &&
           QDBusConnection::sessionBus().isConnected();
}

bool isGnomeShell(const SessionEnvironment& environment) {
    return environment.isWayland() && environment.windowManager == "GNOME Shell" &&
           QDBusConnection::sessionBus().isConnected();
}

bool hasLastingWindowIdentifiers(const SessionEnvironment& environment) {
    return !environment.isWayland() || !environment.i3Socket.empty() || isScriptedKWin(environment) ||
           isGnomeShell(environment);
}

std::unique_ptr<WindowSystem> windowsOfSession(const SessionEnvironment& environment, X11Connection* x11,
                                               Platform::MainQueue& queue,
                                               std::optional<EarlierValue> takenWindows, Platform::Log* log) {
    using Platform::HidingObstacle;
    if (isGnomeShell(environment)) {
        auto others = environment;
        others.windowManager.reset();
        others.waylandSocket.clear();
        return std::make_unique<StandInWindowSystem>(
            std::make_unique<GnomeWindowSystem>(QDBusConnection::sessionBus(), queue,
                                                isGnomeExtensionInstalled),
            windowsOfSession(others, x11, queue, std::move(takenWindows), log));
    }
    if (!environment.i3Socket.empty()) {
        return std::make_unique<I3WindowSystem>(
            environment.i3Socket, queue,
            x11 != nullptr ? std::make_unique<X11WindowSystem>(*x11, queue) : nullptr,
            environment.isWayland() ? HidingObstacle::waylandSession
                                    : HidingObstacle::windowManagerIgnoresHiding,
            std::move(takenWindows), log);
    }
    if (isScriptedKWin(environment)) {
        return std::make_unique<KWinWindowSystem>(QDBusConnection::sessionBus(), queue, runtimeFolder());
    }
    if (environment.isWayland() && !environment.waylandSocket.empty()) {
        auto others = environment;
        others.waylandSocket.clear();
        return std::make_unique<StandInWindowSystem>(
            std::make_unique<ToplevelWindowSystem>(environment.waylandSocket, queue,
                                                   minimisingOf(environment)),
            windowsOfSession(others, x11, queue, std::move(takenWindows), log));
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
