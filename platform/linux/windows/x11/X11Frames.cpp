#include "platform/linux/windows/x11/X11Frames.h"

#include <map>
#include <span>
#include <utility>

namespace LinuxPlatform {
namespace {

/// What the window manager put around each of them, as keys. There are as many round trips as there are
/// windows in one another.
std::map<xcb_window_t, xcb_window_t> framesOf(X11Connection& connection,
                                              const std::vector<xcb_window_t>& windows) {
    std::map<xcb_window_t, xcb_window_t> frames;
    std::map<xcb_window_t, xcb_window_t> inside;
    for (const auto window : windows) {
        inside.emplace(window, window);
    }
    while (!inside.empty()) {
        std::vector<std::pair<std::pair<xcb_window_t, xcb_window_t>, xcb_query_tree_cookie_t>> requests;
        for (const auto& one : inside) {
            requests.emplace_back(one, xcb_query_tree(connection.get(), one.first));
        }
        inside.clear();
        for (const auto& [one, request] : requests) {
            const auto tree = connection.reply<xcb_query_tree_reply>(request);
            const bool isOutermost = tree && tree->parent == tree->root;
            if (tree) {
                (isOutermost ? frames : inside).emplace(isOutermost ? one.first : tree->parent, one.second);
            }
        }
    }
    return frames;
}

} // namespace

std::vector<xcb_window_t> stackingOrderOf(X11Connection& connection,
                                          const std::vector<xcb_window_t>& windows) {
    const auto rootRequest = xcb_query_tree(connection.get(), connection.root());
    const auto frames = framesOf(connection, windows);
    const auto root = connection.reply<xcb_query_tree_reply>(rootRequest);
    if (!root) {
        return {};
    }
    const std::span tops(xcb_query_tree_children(root.get()),
                         static_cast<std::size_t>(xcb_query_tree_children_length(root.get())));
    std::vector<xcb_window_t> order;
    for (const auto top : tops) {
        if (const auto frame = frames.find(top); frame != frames.end()) {
            order.push_back(frame->second);
        }
    }
    return order;
}

xcb_window_t outermostWindow(X11Connection& connection, xcb_window_t window) {
    while (const auto tree =
               connection.reply<xcb_query_tree_reply>(xcb_query_tree(connection.get(), window))) {
        if (tree->parent == tree->root || tree->parent == XCB_WINDOW_NONE) {
            break;
        }
        window = tree->parent;
    }
    return window;
}

} // namespace LinuxPlatform
