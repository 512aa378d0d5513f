#include "platform/linux/windows/x11/X11WindowOrder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace LinuxPlatform {
namespace {

xcb_window_t xcbWindow(WindowId window) {
    return static_cast<xcb_window_t>(window);
}

} // namespace

X11WindowOrder::X11WindowOrder(X11Connection& connection, X11WindowModel& model)
    : connection_(connection),
      model_(model) {}

void X11WindowOrder::remember(std::span<const WindowId> windows, const std::set<WindowId>& returning) {
    memory_.forgetHiding([&](WindowId window) {
        const auto* const found = model_.find(xcbWindow(window));
        return found == nullptr || (!model_.isHidden(*found) && !model_.isExpectedHidden(found->id) &&
                                    !returning.contains(window));
    });
    std::vector<WindowId> order;
    if (!memory_.knows(windows)) {
        std::ranges::copy(model_.stackingOrder(), std::back_inserter(order));
    }
    memory_.noteHiding(windows, order);
}

void X11WindowOrder::forget(std::span<const xcb_window_t> closed) {
    memory_.forget(std::vector<WindowId>(closed.begin(), closed.end()));
}

void X11WindowOrder::sort(std::vector<xcb_window_t>& windows) {
    const auto present = model_.stackingOrder();
    const auto order = memory_.arrange({present.begin(), present.end()}, {windows.begin(), windows.end()});
    std::ranges::stable_sort(
        windows, {}, [&](xcb_window_t window) { return std::ranges::find(order, window) - order.begin(); });
}

std::vector<xcb_window_t> X11WindowOrder::restore(const std::set<WindowId>& windows) {
    const auto present = visibleWindows();
    const auto wanted = memory_.arrange(present, windows);
    memory_.forgetHiding([&](WindowId window) { return windows.contains(window); });
    if (present == wanted) {
        return {};
    }
    if (model_.canRestack()) {
        restack(present, wanted, windows);
        return {};
    }
    // The others are in order already.
    auto place = present.begin();
    const auto firstToRaise = std::ranges::find_if(wanted, [&](WindowId window) {
        place = std::find(place, present.end(), window);
        return place == present.end();
    });
    std::vector<xcb_window_t> toRaise(firstToRaise, wanted.end());
    const auto desktop = model_.currentDesktop();
    const bool mayRaise = std::ranges::all_of(toRaise, [&](xcb_window_t window) {
        return windows.contains(window) && model_.isOnDesktop(*model_.find(window), desktop);
    });
    return mayRaise ? toRaise : std::vector<xcb_window_t>{};
}

std::vector<WindowId> X11WindowOrder::visibleWindows() {
    std::vector<WindowId> windows;
    for (const auto window : model_.stackingOrder()) {
        const auto* const found = model_.find(window);
        if (found != nullptr && model_.isAppWindow(*found) && !model_.isHidden(*found)) {
            windows.push_back(window);
        }
    }
    return windows;
}

int X11WindowOrder::layerOf(WindowId window) const {
    const auto& found = *model_.find(xcbWindow(window));
    const auto has = [&](auto state) { return model_.hasState(found, state) ? 1 : 0; };
    return has(X11WindowModel::netWmStateAbove) - has(X11WindowModel::netWmStateBelow);
}

void X11WindowOrder::restack(const std::vector<WindowId>& present, const std::vector<WindowId>& wanted,
                             const std::set<WindowId>& windows) {
    for (const int layer : {-1, 0, 1}) {
        const auto inLayer = [&](std::vector<WindowId> order) {
            std::erase_if(order, [&](WindowId window) { return layerOf(window) != layer; });
            return order;
        };
        restackLayer(inLayer(present), inLayer(wanted), windows);
    }
    connection_.flush();
}

void X11WindowOrder::restackLayer(std::vector<WindowId> present, const std::vector<WindowId>& wanted,
                                  const std::set<WindowId>& windows) {
    const auto placeOf = [&](WindowId window) { return std::ranges::find(present, window); };
    const auto move = [&](WindowId window, WindowId sibling, xcb_stack_mode_t mode) {
        request(window, sibling, mode);
        present.erase(placeOf(window));
        present.insert(placeOf(sibling) + (mode == XCB_STACK_MODE_ABOVE ? 1 : 0), window);
    };
    // Some window managers only lower a window that is to be below another, and only raise one that is to be
    // above. Either way the neighbour is in its place already.
    for (std::size_t index = wanted.size(); index-- > 1;) {
        const auto window = wanted[index - 1];
        if (windows.contains(window) && placeOf(window) > placeOf(wanted[index])) {
            move(window, wanted[index], XCB_STACK_MODE_BELOW);
        }
    }
    for (std::size_t index = 1; index < wanted.size(); ++index) {
        const auto window = wanted[index];
        if (windows.contains(window) && placeOf(window) < placeOf(wanted[index - 1])) {
            move(window, wanted[index - 1], XCB_STACK_MODE_ABOVE);
        }
    }
}

void X11WindowOrder::request(WindowId window, WindowId sibling, xcb_stack_mode_t mode) {
    connection_.sendToWindowManager(xcbWindow(window), model_.atom(X11WindowModel::netRestackWindow),
                                    std::array{sourcePager, xcbWindow(sibling), std::uint32_t{mode}});
}

} // namespace LinuxPlatform
