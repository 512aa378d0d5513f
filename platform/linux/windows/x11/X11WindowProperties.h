#pragma once

#include "platform/linux/windows/x11/X11Window.h"
#include "platform/linux/x11/X11Connection.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// What an `X11Window` holds of the properties of a window. Main thread only.
class X11WindowProperties {
public:
    /// Bit n stands for property n.
    using Set = std::uint32_t;
    static constexpr Set all = 0xFFFFFFFF;

    /// A question that is under way.
    struct Request {
        std::size_t property = 0;
        xcb_get_property_cookie_t cookie{};
    };

    /// `connection` outlives this object. `atoms` are those of `X11WindowAtom`.
    X11WindowProperties(X11Connection& connection, std::span<const xcb_atom_t> atoms);

    /// Empty for a property that is not read.
    Set setOf(xcb_atom_t property) const;
    std::vector<Request> ask(xcb_window_t window, Set properties) const;
    /// False when the window is gone, and where nothing was asked. An absent property is taken as an empty
    /// one.
    bool receive(std::span<const Request> requests, X11Window& window) const;

private:
    X11Connection& connection_;
    std::vector<xcb_atom_t> atoms_;
};

} // namespace LinuxPlatform
