#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// As the number of a workspace: all of them.
inline constexpr std::uint32_t onAllDesktops = 0xFFFFFFFF;

/// What the X server holds about one client window.
struct X11Window {
    xcb_window_t id = XCB_WINDOW_NONE;
    /// Tells windows apart that have the same identifier one after another.
    std::uint64_t birth = 0;
    /// In the window manager's list at this moment.
    bool isManaged = false;
    std::string instanceName;
    std::string className;
    std::string desktopFile;
    std::string applicationId;
    std::string clientMachine;
    /// As the window itself says; on another machine it means nothing here.
    std::optional<std::uint32_t> declaredProcess;
    /// As the server knows it: the process at the other end of the window's connection.
    std::optional<std::uint32_t> connectedProcess;
    std::vector<xcb_atom_t> state;
    std::vector<xcb_atom_t> type;
    std::optional<std::uint32_t> desktop;
    /// Belongs to another window or to all of its group.
    bool isTransient = false;
    /// What its program asks about the functions of its frame, as a Motif window manager has it; absent where
    /// it asks nothing.
    std::optional<std::uint32_t> wantedFunctions;
    /// What the window manager says may be done with it; absent where it says nothing.
    std::optional<std::vector<xcb_atom_t>> allowedActions;
    /// WM_STATE: absent until a window manager has taken the window in.
    std::optional<std::uint32_t> managerState;
    /// The window was shown without its mark as hidden being taken off.
    bool isHiddenMarkStale = false;
    /// Its title bar can be seen and nothing else. Some window managers mark such windows as hidden.
    bool isRolledUp = false;
};

} // namespace LinuxPlatform
