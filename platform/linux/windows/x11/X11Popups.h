#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// A window that its program put on the screen past the window manager (override-redirect), and that is none
/// of the kinds that belong to what the user is doing: menus, tool tips, what is being dragged.
struct X11Popup {
    /// The windows that it names as its own, the nearest one first.
    std::vector<xcb_window_t> owners;
    /// The connection over which it was made, as in `Window::client`.
    std::uint64_t client = 0;
    /// The process at the other end of that connection.
    std::optional<std::uint32_t> process;
};

/// Takes pop-ups off the screen, such as the messages that chat programs draw themselves, and gives them
/// back.
///
/// A pop-up that is taken is put into a window of ours that is not mapped. Its program moves it, closes it
/// and opens it again as before. It stands in the save-set of our connection: when that ends, however it
/// ends, the server itself puts the pop-up back where it was.
///
/// Has a connection of its own, since other parts choose the root window's events on the shared one. Main
/// thread only.
class X11Popups {
public:
    using Judge = std::function<bool(const X11Popup&)>;

    /// `isToBeTaken` is asked of every pop-up that is there, and of others when they appear. Null where the
    /// display cannot be reached.
    static std::unique_ptr<X11Popups> open(Judge isToBeTaken);
    /// Gives everything back.
    ~X11Popups();
    X11Popups(const X11Popups&) = delete;
    X11Popups& operator=(const X11Popups&) = delete;

    /// To be called when some answers of the judge are different now.
    void judgeAnew();

private:
    enum Atom : std::size_t {
        windowType,
        clientLeader,
        firstTypeLeftAlone,
        lastTypeLeftAlone = firstTypeLeftAlone + 8,
        atomCount
    };
    struct Known {
        X11Popup popup;
        bool isTaken = false;
    };
    class Reading;

    X11Popups(std::unique_ptr<X11Connection> connection, Judge isToBeTaken);

    void handleEvent(const xcb_generic_event_t& event);
    void mapped(const xcb_map_notify_event_t& event);
    void unmapped(const xcb_unmap_notify_event_t& event);
    void lookAround();
    void learn(std::span<const xcb_window_t> windows);
    bool isLeftAlone(std::span<const xcb_atom_t> types) const;
    void judge(xcb_window_t window, Known& known);
    /// False when its program has withdrawn it meanwhile.
    bool take(xcb_window_t window);
    void giveBack(xcb_window_t window);
    void moveInto(xcb_window_t parent, xcb_window_t window, std::uint8_t saveSetMode);

    std::unique_ptr<X11Connection> connection_;
    Judge isToBeTaken_;
    std::vector<xcb_atom_t> atoms_;
    bool hasProcessQuery_ = false;
    /// In the corner of the screen, so that what is inside has the same place as outside.
    xcb_window_t container_ = XCB_WINDOW_NONE;
    std::map<xcb_window_t, Known> known_;
    Platform::Subscription eventHandler_;
};

} // namespace LinuxPlatform
