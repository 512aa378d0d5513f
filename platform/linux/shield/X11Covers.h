#pragma once

#include "platform/linux/windows/WindowHints.h"
#include "platform/linux/x11/X11Connection.h"

#include <QTimer>

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace LinuxPlatform {

/// Covers windows: with a window of ours inside each, opaque, larger than any screen and on top of everything
/// else in there. The X server itself moves, raises and maps a cover with what it is in, so there is nothing
/// to be late for. A second one in the frame that the window manager puts around covers the title; the first
/// is there before that frame is, and stays when the window manager goes. Covers are gone with our
/// connection, however it ends.
///
/// Windows are followed from their creation; which of them are to be covered is asked and answered at any
/// later time. Pop-ups past the window manager, which are on the screen at once, are covered without asking
/// where all windows of their connection are. Nothing is covered while a window manager reigns with which
/// this was not tried.
///
/// Belongs to the thread that opened it, which has an event loop.
class X11Covers {
public:
    struct Question {
        std::uint64_t number = 0;
        xcb_window_t window = XCB_WINDOW_NONE;
        WindowHints hints;
    };
    struct Answer {
        std::uint64_t number = 0;
        xcb_window_t window = XCB_WINDOW_NONE;
        bool isToBeCovered = false;
    };
    /// Called from the event loop.
    using Ask = std::function<void(std::vector<Question>)>;

    /// Follows nothing yet. Null where the display cannot be reached.
    static std::unique_ptr<X11Covers> open(Ask ask);
    X11Covers(const X11Covers&) = delete;
    X11Covers& operator=(const X11Covers&) = delete;
    ~X11Covers() = default;

    /// Covers these windows at once and then looks around. To be called once.
    void begin(const std::vector<xcb_window_t>& windows);
    /// An answer to a question that was asked before a window said something else does not count.
    void take(const std::vector<Answer>& answers);
    /// Asks about all windows again.
    void askAnew();

private:
    enum Atom : std::size_t {
        desktopFile,
        applicationId,
        windowType,
        windowTypeDesktop,
        windowTypeDock,
        embeddingInfo,
        managerCheck,
        windowName,
        clientList,
        atomCount
    };
    /// A window of a program's own, not what a window manager puts around it.
    struct Client {
        /// Past the window manager.
        bool isPopup = false;
        bool isStale = true;
        /// Of the question about what it says now; 0 where there is none.
        std::uint64_t question = 0;
        /// Absent until it is answered, and for what is none of an app's.
        std::optional<bool> isToBeCovered;
        /// What the window manager has put around it, as a child of the root window.
        xcb_window_t frame = XCB_WINDOW_NONE;

        bool isCovered() const { return isToBeCovered.value_or(false); }
    };
    class Reading;

    X11Covers(std::unique_ptr<X11Connection> connection, Ask ask);

    void handleEvent(const xcb_generic_event_t& event);
    void created(const xcb_create_notify_event_t& event);
    void reparented(const xcb_reparent_notify_event_t& event);
    void siblingChanged(xcb_window_t parent, xcb_window_t window);
    void coverUnmapped(const xcb_unmap_notify_event_t& event);
    void destroyed(const xcb_destroy_notify_event_t& event);
    void propertyChanged(const xcb_property_notify_event_t& event);

    void lookAround();
    void readClientList();
    void readManager();
    void managerChanged();
    /// Raises what has slid under and asks about what is new, once for all that has arrived.
    void settleSoon();
    void settle();
    void readStale();

    void set(xcb_window_t window, Client& client, std::optional<bool> isToBeCovered);
    void protect(xcb_window_t window, Client& client);
    void findFrame(xcb_window_t window, Client& client);
    void coverInside(xcb_window_t parent);
    void uncover(xcb_window_t parent);
    void uncoverAll();
    bool isOwn(xcb_window_t window) const { return connectionOf(window) == ownConnection_; }
    xcb_window_t connectionOf(xcb_window_t window) const { return window & ~idMask_; }
    bool areAllCoveredOf(xcb_window_t connection) const;
    void choose(xcb_window_t window, std::uint32_t events);

    std::unique_ptr<X11Connection> connection_;
    Ask ask_;
    std::vector<xcb_atom_t> atoms_;
    bool hasProcessQuery_ = false;
    std::uint32_t idMask_;
    xcb_window_t ownConnection_;
    /// By which it says that it is there.
    xcb_window_t managerWindow_ = XCB_WINDOW_NONE;
    /// That of the window manager; none of its windows is a program's own.
    xcb_window_t managerConnection_ = XCB_WINDOW_NONE;
    bool isManagerTried_ = false;
    std::map<xcb_window_t, Client> clients_;
    /// By what they are in.
    std::map<xcb_window_t, xcb_window_t> covers_;
    /// Where something may have come above the cover.
    std::set<xcb_window_t> toRaiseIn_;
    bool isListStale_ = false;
    bool isAnyStale_ = false;
    std::uint64_t lastQuestion_ = 0;
    QTimer settling_;
    Platform::Subscription eventHandler_;
};

} // namespace LinuxPlatform
