#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace LinuxPlatform {

/// The names that window managers and windows speak with, each of which a server has a number for.
enum class X11WindowAtom : std::size_t {
    netClientList,
    netActiveWindow,
    netCurrentDesktop,
    netSupportingWmCheck,
    netSupported,
    wmState,
    netWmState,
    netWmStateHidden,
    netWmStateFocused,
    netWmStateShaded,
    netWmStateSkipTaskbar,
    netWmPid,
    netWmWindowType,
    netWmWindowTypeDesktop,
    netWmWindowTypeDock,
    netWmWindowTypeMenu,
    netWmWindowTypeToolbar,
    netWmWindowTypeSplash,
    netWmWindowTypeUtility,
    netWmAllowedActions,
    netWmActionMinimize,
    motifWmHints,
    netWmDesktop,
    kdeNetWmDesktopFile,
    gtkApplicationId,
    wmChangeState,
    netWmStateSticky,
    netWmStateAbove,
    netWmStateBelow,
    netRestackWindow,
    netRequestFrameExtents,
    atomCount
};

/// In the order of `X11WindowAtom`.
inline constexpr std::array<std::string_view, static_cast<std::size_t>(X11WindowAtom::atomCount)>
    x11WindowAtomNames{
        "_NET_CLIENT_LIST",
        "_NET_ACTIVE_WINDOW",
        "_NET_CURRENT_DESKTOP",
        "_NET_SUPPORTING_WM_CHECK",
        "_NET_SUPPORTED",
        "WM_STATE",
        "_NET_WM_STATE",
        "_NET_WM_STATE_HIDDEN",
        "_NET_WM_STATE_FOCUSED",
        "_NET_WM_STATE_SHADED",
        "_NET_WM_STATE_SKIP_TASKBAR",
        "_NET_WM_PID",
        "_NET_WM_WINDOW_TYPE",
        "_NET_WM_WINDOW_TYPE_DESKTOP",
        "_NET_WM_WINDOW_TYPE_DOCK",
        "_NET_WM_WINDOW_TYPE_MENU",
        "_NET_WM_WINDOW_TYPE_TOOLBAR",
        "_NET_WM_WINDOW_TYPE_SPLASH",
        "_NET_WM_WINDOW_TYPE_UTILITY",
        "_NET_WM_ALLOWED_ACTIONS",
        "_NET_WM_ACTION_MINIMIZE",
        "_MOTIF_WM_HINTS",
        "_NET_WM_DESKTOP",
        "_KDE_NET_WM_DESKTOP_FILE",
        "_GTK_APPLICATION_ID",
        "WM_CHANGE_STATE",
        "_NET_WM_STATE_STICKY",
        "_NET_WM_STATE_ABOVE",
        "_NET_WM_STATE_BELOW",
        "_NET_RESTACK_WINDOW",
        "_NET_REQUEST_FRAME_EXTENTS",
    };

} // namespace LinuxPlatform
