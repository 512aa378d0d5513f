#pragma once

#include "platform/linux/windows/x11/X11Window.h"
#include "platform/linux/windows/x11/X11WindowAtoms.h"
#include "platform/linux/windows/x11/X11WindowProperties.h"
#include "platform/linux/x11/X11Connection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

/// A live picture of the client windows: read once, then kept true by the server's events. Every reading is
/// batched: the number of round trips does not depend on the number of windows. Main thread only.
class X11WindowModel {
public:
    /// What happened since the last `update`, in this order.
    struct Changes {
        std::vector<xcb_window_t> opened;
        /// Windows whose class or process changed, and those that the list named before their time.
        std::vector<xcb_window_t> identified;
        /// Windows that were hidden, or asked to be, and are to be seen again or still.
        std::vector<xcb_window_t> returned;
        std::optional<xcb_window_t> activated;
        /// Another window may have the identifier already.
        std::vector<xcb_window_t> closed;
    };

    using Atom = X11WindowAtom;
    using enum X11WindowAtom;

    /// `connection` outlives the model. `onChanged` is called when events have arrived that `update` would
    /// take in; it is called from the event loop and may call back.
    X11WindowModel(X11Connection& connection, std::function<void()> onChanged);

    xcb_atom_t atom(Atom name) const { return atoms_[static_cast<std::size_t>(name)]; }

    /// Takes in whatever the server has sent. The first call reads everything and reports no changes.
    Changes update();
    /// Changes whenever a window or the list of windows does.
    std::uint64_t generation() const { return generation_; }

    /// Whether a window manager is there, as of the last `update`. One that does not say so is known by its
    /// list of windows.
    bool hasManager() const {
        return managerWindow_ != XCB_WINDOW_NONE ? !isManagerGone_ : !clientList_.empty();
    }
    /// Whether it says which windows it manages, as of the last `update`.
    bool hasWindowList() const { return hasManager() && (isClientListThere_ || isClientListSupported_); }
    /// Whether it says that it puts windows below others on request.
    bool canRestack() const { return isRestackingSupported_; }
    /// Whether it says that it answers what `X11ManagerEcho` asks.
    bool answersInTurn() const { return isFrameQuestionSupported_; }
    /// Whether the list is that of the window manager before it.
    bool isWindowListOld() const { return hasManager() && isClientListOld_; }
    /// Changes with the window manager, as far as it shows a window of its own.
    std::uint64_t managerGeneration() const { return managerGeneration_; }
    /// Managed windows in the window manager's order, oldest first; none while there is no window manager.
    const std::vector<xcb_window_t>& managedWindows() const { return clientList_; }
    /// Windows that come later have greater ones.
    std::uint64_t newestBirth() const { return lastBirth_; }
    /// None when no window has the focus.
    std::optional<xcb_window_t> activeWindow() const {
        return activeWindow_ != XCB_WINDOW_NONE ? std::optional(activeWindow_) : std::nullopt;
    }
    /// Null when there is no such window; valid until the next `update`.
    const X11Window* find(xcb_window_t window) const;
    bool hasState(const X11Window& window, Atom state) const;
    bool isOfType(const X11Window& window, Atom type) const;
    /// Neither a panel nor the desktop itself.
    bool isAppWindow(const X11Window& window) const;
    /// As the window manager says, unless the window can be seen to be there. A window that can be seen is
    /// not enough: some window managers leave hidden windows mapped.
    bool isHidden(const X11Window& window) const {
        return isMarkedHidden(window) && !window.isHiddenMarkStale && !window.isRolledUp;
    }
    /// On which workspace it is, `onAllDesktops` where on all; some window managers say the latter by a state
    /// alone.
    std::optional<std::uint32_t> desktopOf(const X11Window& window) const {
        return hasState(window, netWmStateSticky) ? onAllDesktops : window.desktop;
    }
    /// Whether it is seen on that workspace, as far as the window manager says anything.
    bool isOnDesktop(const X11Window& window, std::optional<std::uint32_t> desktop) const;
    /// Whether its program and the window manager let it be minimized, as far as they say anything.
    bool mayBeMinimized(const X11Window& window) const;
    /// To be called when a window is asked to hide. It may be back before its hiding is noticed. The numbers
    /// of requests count up.
    void expectHidden(xcb_window_t window, std::uint64_t request);
    /// Whether it was asked to hide, and has neither been seen hidden nor come back since.
    bool isExpectedHidden(xcb_window_t window) const;
    /// To be called when it has not been hidden for so long that it will not be; without effect where it was
    /// asked again since.
    void expectNoMore(xcb_window_t window, std::uint64_t request);

    /// The managed windows, bottom to top; asks the server. Some window managers are late to write it down.
    std::vector<xcb_window_t> stackingOrder();
    /// Asks the server.
    std::optional<std::uint32_t> currentDesktop();

private:
    class Reading;

    struct Entry {
        X11Window window;
        X11WindowProperties::Set staleProperties = 0;
        bool isNew = true;
        bool isViewableStale = false;
        /// Nothing between it and the screen is unmapped. Known only while the mark as hidden is in doubt.
        bool isViewable = false;
        /// The window was mapped after the window manager last wrote its state, or before the first reading.
        bool isHiddenMarkInDoubt = false;
        bool isExpectedHidden = false;
        /// The last one to hide it.
        std::uint64_t hideRequest = 0;
        /// Since then it was unmapped and mapped again, and so often its WM_STATE was written, but for the
        /// write that takes it in. A window that has just come back may be mapped late.
        bool wasUnmapped = false;
        /// Its window manager takes hidden windows off the screen itself.
        bool isUnmappedToHide = false;
        bool wasMapped = false;
        int managerStateWrites = 0;
        /// What the window manager put around a window that is rolled up and marked as hidden.
        xcb_window_t frame = XCB_WINDOW_NONE;
        bool isFrameStale = false;

        bool isStale() const { return isNew || isViewableStale || isFrameStale || staleProperties != 0; }
    };

    void handleEvent(const xcb_generic_event_t& event);
    void sessionPropertyChanged(const xcb_property_notify_event_t& notification);
    void windowPropertyChanged(xcb_window_t window, xcb_atom_t property);
    void windowMapped(xcb_window_t window);
    void windowUnmapped(xcb_window_t window);
    void windowDestroyed(xcb_window_t window);
    void windowsChanged();

    void readRoot(Changes& changes);
    bool isManagerAlive();
    void takeClientList(std::vector<xcb_window_t> list, Changes& changes);
    void readStaleWindows(Changes& changes);
    void compare(const X11Window& before, const X11Window& now, Changes& changes) const;
    bool isMarkedHidden(const X11Window& window) const;
    bool isHiddenMarkStale(const Entry& entry) const;
    bool isOnlyTheFocusDifferent(const X11Window& before, const X11Window& now) const;
    bool isBackUnseen(const Entry& entry, const X11Window& before) const;
    bool isRolledUp(Entry& entry);
    Entry* entryWithFrame(xcb_window_t frame);
    void frameChanged(xcb_window_t window);

    xcb_get_property_cookie_t requestNumbers(xcb_window_t window, Atom name);
    std::vector<std::uint32_t> receiveNumbers(xcb_get_property_cookie_t request);

    X11Connection& connection_;
    std::function<void()> onChanged_;
    std::vector<xcb_atom_t> atoms_;
    X11WindowProperties properties_;
    bool hasProcessQuery_ = false;
    bool isFirstUpdate_ = true;
    bool isManagerStale_ = true;
    bool isClientListStale_ = true;
    bool isActiveWindowStale_ = true;
    bool areWindowsStale_ = false;
    std::uint64_t generation_ = 0;
    std::uint64_t lastBirth_ = 0;
    std::uint64_t managerGeneration_ = 0;
    /// The window by which a window manager shows that it is there; none if it has none.
    xcb_window_t managerWindow_ = XCB_WINDOW_NONE;
    bool isManagerGone_ = false;
    bool isClientListThere_ = false;
    /// As the window manager says of its own abilities; it may have no list while it has no windows.
    bool isClientListSupported_ = false;
    bool isClientListOld_ = false;
    /// Another one has named its window since the present one was read.
    bool isNextManagerThere_ = false;
    bool isMinimizeActionSupported_ = false;
    bool isRestackingSupported_ = false;
    bool isFrameQuestionSupported_ = false;
    std::vector<xcb_window_t> clientList_;
    xcb_window_t activeWindow_ = XCB_WINDOW_NONE;
    /// As of its last reading; 0 where it was not in the list of windows then.
    std::uint64_t activeWindowBirth_ = 0;
    std::map<xcb_window_t, Entry> entries_;
    /// Since the last `update`.
    std::vector<xcb_window_t> closed_;
    Platform::Subscription eventHandler_;
};

} // namespace LinuxPlatform
