#include "platform/linux/desktopicons/X11DesktopWindows.h"

#include "platform/linux/x11/X11Property.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t longestList = 1U << 16U;
constexpr std::uint32_t longestClass = 256;
constexpr std::uint32_t mostTypes = 64;

/// The second of the two names in the property.
std::string classIn(const xcb_get_property_reply_t* reply) {
    const auto bytes = bytesIn(reply);
    const auto end = bytes.find('\0');
    return end == std::string_view::npos
               ? std::string()
               : std::string(bytes.substr(end + 1, bytes.find('\0', end + 1) - end - 1));
}

} // namespace

X11DesktopWindows::X11DesktopWindows(X11Connection& connection) : connection_(connection) {
    constexpr std::array<std::string_view, atomCount> names{"_NET_CLIENT_LIST", "_NET_WM_WINDOW_TYPE",
                                                            "_NET_WM_WINDOW_TYPE_DESKTOP", "_NET_WM_PID"};
    atoms_ = connection_.atoms(names);
}

std::vector<DesktopScene::Window> X11DesktopWindows::list() {
    struct Questions {
        xcb_get_window_attributes_cookie_t attributes;
        xcb_get_property_cookie_t type;
        xcb_get_property_cookie_t className;
        xcb_get_property_cookie_t process;
    };
    auto* const xcb = connection_.get();
    const auto ask = [&](xcb_window_t window, xcb_atom_t property, std::uint32_t length) {
        return xcb_get_property(xcb, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, length);
    };
    std::vector<Questions> questions;
    for (const auto window : candidates()) {
        questions.push_back(
            {xcb_get_window_attributes(xcb, window), ask(window, atoms_[windowType], mostTypes),
             ask(window, XCB_ATOM_WM_CLASS, longestClass), ask(window, atoms_[processId], 1)});
    }
    std::vector<DesktopScene::Window> windows;
    for (const auto& question : questions) {
        const auto attributes = connection_.reply<xcb_get_window_attributes_reply>(question.attributes);
        const auto type = connection_.reply<xcb_get_property_reply>(question.type);
        const auto className = connection_.reply<xcb_get_property_reply>(question.className);
        const auto process = connection_.reply<xcb_get_property_reply>(question.process);
        const bool isShown = attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
        if (isShown && std::ranges::count(numbersIn(type.get()), atoms_[desktopType]) > 0) {
            const auto numbers = numbersIn(process.get());
            windows.push_back(
                {classIn(className.get()), numbers.empty() ? std::nullopt : std::optional(numbers.front())});
        }
    }
    return windows;
}

std::vector<xcb_window_t> X11DesktopWindows::candidates() {
    const auto listQuestion = xcb_get_property(connection_.get(), 0, connection_.root(), atoms_[clientList],
                                               XCB_GET_PROPERTY_TYPE_ANY, 0, longestList);
    const auto treeQuestion = xcb_query_tree(connection_.get(), connection_.root());
    const auto listReply = connection_.reply<xcb_get_property_reply>(listQuestion);
    const auto tree = connection_.reply<xcb_query_tree_reply>(treeQuestion);
    const auto managed = numbersIn(listReply.get());
    std::vector<xcb_window_t> windows(managed.begin(), managed.end());
    if (tree) {
        // Window managers need not manage a desktop.
        const std::span<const xcb_window_t> top(
            xcb_query_tree_children(tree.get()),
            static_cast<std::size_t>(xcb_query_tree_children_length(tree.get())));
        windows.insert(windows.end(), top.begin(), top.end());
    }
    std::ranges::sort(windows);
    windows.erase(std::unique(windows.begin(), windows.end()), windows.end());
    return windows;
}

} // namespace LinuxPlatform
