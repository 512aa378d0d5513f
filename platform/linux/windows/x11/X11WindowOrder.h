#pragma once

#include "platform/linux/windows/StackingMemory.h"
#include "platform/linux/windows/x11/X11WindowModel.h"

#include <cstdint>
#include <set>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// In a client message: a request in the user's name, which focus stealing prevention lets through.
inline constexpr std::uint32_t sourcePager = 2;

/// Keeps the order of the windows while some of them are hidden: managers minimize to the bottom, raise what
/// gets the focus meanwhile, or put on top what comes back. All orders are from bottom to top. Main thread
/// only.
class X11WindowOrder {
public:
    /// Both outlive this object.
    X11WindowOrder(X11Connection& connection, X11WindowModel& model);

    /// To be called before `windows` are hidden. Those in `returning` are on their way back; others that are
    /// in view are where they are to be.
    void remember(std::span<const WindowId> windows, const std::set<WindowId>& returning);
    void forget(std::span<const xcb_window_t> closed);
    /// Orders these windows as they lay before.
    void sort(std::vector<xcb_window_t>& windows);
    /// Asks the manager to put windows that are back in their places. If it knows no request for that, those
    /// which are to be raised one after another, unless other windows would have to be as well.
    std::vector<xcb_window_t> restore(const std::set<WindowId>& windows);

private:
    std::vector<WindowId> visibleWindows();
    int layerOf(WindowId window) const;
    void restack(const std::vector<WindowId>& present, const std::vector<WindowId>& wanted,
                 const std::set<WindowId>& windows);
    void restackLayer(std::vector<WindowId> present, const std::vector<WindowId>& wanted,
                      const std::set<WindowId>& windows);
    void request(WindowId window, WindowId sibling, xcb_stack_mode_t mode);

    X11Connection& connection_;
    X11WindowModel& model_;
    StackingMemory memory_;
};

} // namespace LinuxPlatform
