#include "platform/linux/ownwindows/X11MenuBar.h"

#include "platform/linux/x11/X11Property.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t mostWindows = 4096;
constexpr std::uint32_t mostTypes = 16;

bool contains(const auto& range, const auto& value) {
    return std::ranges::find(range, value) != range.end();
}

} // namespace

X11MenuBar::X11MenuBar(X11Connection& connection) : connection_(connection), atoms_() {
    const std::array<std::string_view, 6> names{"_NET_CLIENT_LIST",         "_NET_ACTIVE_WINDOW",
                                                "_NET_WM_WINDOW_TYPE",      "_NET_WM_WINDOW_TYPE_DESKTOP",
                                                "_NET_WM_WINDOW_TYPE_DOCK", "_NET_WM_WINDOW_TYPE_TOOLTIP"};
    const auto atoms = connection_.atoms(names);
    atoms_ = {atoms[0], atoms[1], atoms[2], atoms[3], atoms[4], atoms[5]};
}

std::optional<std::string> X11MenuBar::owningApplication() {
    const auto panels = panelClients();
    const auto tree =
        connection_.reply<xcb_query_tree_reply>(xcb_query_tree(connection_.get(), connection_.root()));
    if (panels.empty() || !tree) {
        return std::nullopt;
    }
    const std::span children(xcb_query_tree_children(tree.get()),
                             static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
    for (const auto child : children) {
        if (!contains(panels, clientOf(child))) {
            continue;
        }
        const auto attributes = connection_.reply<xcb_get_window_attributes_reply>(
            xcb_get_window_attributes(connection_.get(), child));
        if (attributes && attributes->override_redirect != 0 &&
            attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
            attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
            !contains(values(askType(child)), atoms_.tooltip)) {
            return controlCenter;
        }
    }
    return std::nullopt;
}

std::optional<std::string> X11MenuBar::frontmostApplication() {
    const auto active = windowsIn(atoms_.activeWindow);
    // One program may show the desktop and the panels.
    const bool isPanels = !active.empty() && !contains(values(askType(active.front())), atoms_.desktop) &&
                          contains(panelClients(), clientOf(active.front()));
    return isPanels ? std::optional<std::string>(controlCenter) : std::nullopt;
}

std::vector<std::uint32_t> X11MenuBar::values(xcb_get_property_cookie_t question) {
    const auto reply = connection_.reply<xcb_get_property_reply>(question);
    const auto numbers = numbersIn(reply.get());
    return {numbers.begin(), numbers.end()};
}

xcb_get_property_cookie_t X11MenuBar::askType(xcb_window_t window) {
    return xcb_get_property(connection_.get(), 0, window, atoms_.type, XCB_ATOM_ATOM, 0, mostTypes);
}

std::vector<xcb_window_t> X11MenuBar::windowsIn(xcb_atom_t property) {
    return values(xcb_get_property(connection_.get(), 0, connection_.root(), property, XCB_ATOM_WINDOW, 0,
                                   mostWindows));
}

std::vector<std::uint32_t> X11MenuBar::panelClients() {
    const auto windows = windowsIn(atoms_.clientList);
    std::vector<xcb_get_property_cookie_t> questions;
    questions.reserve(windows.size());
    for (const auto window : windows) {
        questions.push_back(askType(window));
    }
    std::vector<std::uint32_t> clients;
    for (std::size_t index = 0; index < windows.size(); ++index) {
        if (contains(values(questions[index]), atoms_.dock)) {
            clients.push_back(clientOf(windows[index]));
        }
    }
    return clients;
}

std::uint32_t X11MenuBar::clientOf(xcb_window_t window) const {
    return window & ~xcb_get_setup(connection_.get())->resource_id_mask;
}

} // namespace LinuxPlatform
