#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// Whose windows a session is made of.
enum class SessionKind {
    /// An X server's own.
    x11,
    /// A Wayland compositor's, which serves X11 programs too, through an X server of its own.
    waylandWithX,
    /// A Wayland compositor's alone.
    wayland,
    /// Nobody's: neither server answers.
    none,
};

/// Which session this is. A value: found out once at the start, from what the servers say of themselves first
/// and from variables last, and handed to whoever needs it. Nobody else reads these variables or asks for an
/// X server.
struct SessionEnvironment {
    SessionKind kind = SessionKind::none;
    /// What the window manager or the compositor calls itself ("Openbox", "sway", "KWin", "GNOME Shell");
    /// absent where nothing says so.
    std::optional<std::string> windowManager;
    /// As in DISPLAY; empty without an X server.
    std::string display;
    /// As in DISPLAY where no X server answers there; empty otherwise.
    std::string silentDisplay;
    /// Empty without a Wayland compositor.
    std::filesystem::path waylandSocket;
    /// Where i3 or sway answers; empty without one.
    std::filesystem::path i3Socket;
    /// What the desktop calls itself and what it is like, the most special name first, as in
    /// XDG_CURRENT_DESKTOP.
    std::vector<std::string> desktops;

    bool operator==(const SessionEnvironment&) const = default;

    bool isWayland() const { return kind == SessionKind::waylandWithX || kind == SessionKind::wayland; }
    bool hasXServer() const { return kind == SessionKind::x11 || kind == SessionKind::waylandWithX; }
};

} // namespace LinuxPlatform
