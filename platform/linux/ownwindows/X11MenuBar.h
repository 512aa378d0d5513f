#pragma once

#include "platform/MenuBar.h"
#include "platform/linux/x11/X11Connection.h"

#include <vector>

namespace LinuxPlatform {

/// The panels of an X session. A panel's pop-up is a window that belongs to the same program as a panel;
/// the desktop behind all windows is none.
class X11MenuBar : public Platform::MenuBar {
public:
    /// `connection` outlives the bar.
    explicit X11MenuBar(X11Connection& connection);

    std::optional<std::string> owningApplication() override;
    std::optional<std::string> frontmostApplication() override;

private:
    struct Atoms {
        xcb_atom_t clientList;
        xcb_atom_t activeWindow;
        xcb_atom_t type;
        xcb_atom_t desktop;
        xcb_atom_t dock;
        xcb_atom_t tooltip;
    };

    /// The atoms or windows that a property holds.
    std::vector<std::uint32_t> values(xcb_get_property_cookie_t question);
    xcb_get_property_cookie_t askType(xcb_window_t window);
    std::vector<xcb_window_t> windowsIn(xcb_atom_t property);
    /// The X clients that show a panel, each by the bits that all its windows share.
    std::vector<std::uint32_t> panelClients();
    std::uint32_t clientOf(xcb_window_t window) const;

    X11Connection& connection_;
    Atoms atoms_;
};

} // namespace LinuxPlatform
