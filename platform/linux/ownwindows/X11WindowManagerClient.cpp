#include "platform/linux/ownwindows/X11WindowManagerClient.h"

#include "platform/linux/x11/X11Property.h"

#include <xcb/shape.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t mostWindows = 4096;

/// The places of a reserved edge in `_NET_WM_STRUT_PARTIAL` (Extended Window Manager Hints 1.5).
enum Strut : std::size_t {
    left,
    right,
    top,
    bottom,
    leftStart,
    leftEnd,
    rightStart,
    rightEnd,
    topStart,
    topEnd,
    bottomStart,
    bottomEnd,
    strutLength
};

QRect between(std::uint32_t x1, std::uint32_t y1, std::uint32_t x2, std::uint32_t y2) {
    return QRect(QPoint(static_cast<int>(x1), static_cast<int>(y1)),
                 QPoint(static_cast<int>(x2) - 1, static_cast<int>(y2) - 1));
}

void addReserved(std::span<const std::uint32_t> strut, std::uint32_t width, std::uint32_t height,
                 std::vector<QRect>& result) {
    if (strut.size() < strutLength) {
        return;
    }
    const auto add = [&](const QRect& rect) {
        if (!rect.isEmpty()) {
            result.push_back(rect);
        }
    };
    add(between(0, strut[leftStart], strut[left], strut[leftEnd] + 1));
    add(between(width - std::min(width, strut[right]), strut[rightStart], width, strut[rightEnd] + 1));
    add(between(strut[topStart], 0, strut[topEnd] + 1, strut[top]));
    add(between(strut[bottomStart], height - std::min(height, strut[bottom]), strut[bottomEnd] + 1, height));
}

} // namespace

X11WindowManagerClient::X11WindowManagerClient(X11Connection& connection)
    : connection_(connection),
      atoms_() {
    const std::array<std::string_view, 8> names{"_NET_WM_CM_S0",
                                                "_NET_CLIENT_LIST",
                                                "_NET_WM_STRUT_PARTIAL",
                                                "_NET_WM_STATE",
                                                "_NET_WM_STATE_ABOVE",
                                                "_NET_WM_STATE_SKIP_TASKBAR",
                                                "_NET_WM_STATE_SKIP_PAGER",
                                                "_NET_ACTIVE_WINDOW"};
    const auto atoms = connection_.atoms(names);
    atoms_ = {atoms[0], atoms[1], atoms[2], atoms[3], atoms[4], atoms[5], atoms[6], atoms[7]};
}

bool X11WindowManagerClient::isComposited() {
    const auto owner = connection_.reply<xcb_get_selection_owner_reply>(
        xcb_get_selection_owner(connection_.get(), atoms_.compositor));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

void X11WindowManagerClient::markAsPopover(xcb_window_t window) {
    const std::array states{atoms_.above, atoms_.skipTaskbar, atoms_.skipPager};
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, atoms_.state, XCB_ATOM_ATOM, 32,
                        states.size(), states.data());
    // The toolkit maps the window over its own connection, and this has to be there before.
    connection_.reply<xcb_get_input_focus_reply>(xcb_get_input_focus(connection_.get()));
}

void X11WindowManagerClient::setInputRegion(xcb_window_t window, const QRect& pixels) {
    const xcb_rectangle_t rectangle{
        static_cast<std::int16_t>(pixels.x()), static_cast<std::int16_t>(pixels.y()),
        static_cast<std::uint16_t>(pixels.width()), static_cast<std::uint16_t>(pixels.height())};
    xcb_shape_rectangles(connection_.get(), XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         window, 0, 0, 1, &rectangle);
    connection_.flush();
}

void X11WindowManagerClient::activate(xcb_window_t window) {
    // Source 2: what the user wants goes before the prevention of focus stealing.
    const std::array<std::uint32_t, 3> data{2, connection_.serverTime(), XCB_WINDOW_NONE};
    connection_.sendToWindowManager(window, atoms_.activeWindow, data);
    connection_.flush();
}

std::vector<QRect> X11WindowManagerClient::panels() {
    std::vector<QRect> result;
    const auto clients = connection_.reply<xcb_get_property_reply>(xcb_get_property(
        connection_.get(), 0, connection_.root(), atoms_.clientList, XCB_ATOM_WINDOW, 0, mostWindows));
    const auto geometry =
        connection_.reply<xcb_get_geometry_reply>(xcb_get_geometry(connection_.get(), connection_.root()));
    if (!geometry) {
        return result;
    }
    std::vector<xcb_get_property_cookie_t> cookies;
    for (const auto window : numbersIn(clients.get())) {
        cookies.push_back(xcb_get_property(connection_.get(), 0, window, atoms_.strutPartial,
                                           XCB_ATOM_CARDINAL, 0, strutLength));
    }
    for (const auto& cookie : cookies) {
        const auto strut = connection_.reply<xcb_get_property_reply>(cookie);
        addReserved(numbersIn(strut.get()), geometry->width, geometry->height, result);
    }
    return result;
}

} // namespace LinuxPlatform
