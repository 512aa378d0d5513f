#pragma once

#include "platform/Lifetime.h"
#include "platform/MainQueue.h"
#include "platform/linux/i3/I3Connection.h"

#include <QByteArray>
#include <QPoint>
#include <QRect>
#include <xcb/xproto.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace LinuxPlatform {

/// Speaks to sway about windows of this program, which it shows where it likes, and about panels. Its pixels
/// are those that X11 programs see. Source: sway(5) and sway-ipc(7). Main thread only.
class SwayWindowManagerClient {
public:
    /// `queue` outlives this object. `patience` is how long a question about panels may take.
    SwayWindowManagerClient(std::filesystem::path socket, Platform::MainQueue& queue,
                            std::chrono::milliseconds patience = std::chrono::milliseconds(200));

    /// The edges of the outputs that panels keep for themselves. Waits a moment for sway's answer, and gives
    /// what it said before if there is none.
    std::vector<QRect> panels();
    /// Moves a window, as soon as sway shows it. `whenThere` is called once that is done, or after a moment
    /// in which it could not be; not if this is asked for again before.
    void place(xcb_window_t window, const QPoint& corner, std::function<void()> whenThere);

private:
    struct Placement {
        xcb_window_t window;
        QPoint corner;
        /// Null once it has been called.
        std::function<void()> whenThere;
    };

    void handleEvent(I3Event event, const QByteArray& payload);
    void move(const Placement& placement);
    void tell(xcb_window_t window);
    void forget(xcb_window_t window);

    Platform::MainQueue& queue_;
    std::chrono::milliseconds patience_;
    /// Of the window that is not there yet.
    std::optional<Placement> due_;
    QByteArray outputs_;
    QByteArray workspaces_;
    I3Connection connection_;
    Platform::Lifetime lifetime_;
};

} // namespace LinuxPlatform
