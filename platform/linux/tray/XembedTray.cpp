#include "platform/linux/tray/XembedTray.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

int screenNumber(const X11Connection& connection) {
    int number = 0;
    for (auto roots = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
         roots.rem > 0 && roots.data->root != connection.root(); xcb_screen_next(&roots)) {
        ++number;
    }
    return number;
}

xcb_window_t selectionOwner(const X11Connection& connection, xcb_atom_t selection) {
    const XcbPointer<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection.get(), xcb_get_selection_owner(connection.get(), selection), nullptr));
    return reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
}

void selectEvents(const X11Connection& connection, xcb_window_t window, std::uint32_t mask) {
    xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &mask);
}

} // namespace

XembedTray::XembedTray(X11Connection& connection, std::function<void()> onChange)
    : connection_(connection),
      onChange_(std::move(onChange)) {
    const auto selectionName = "_NET_SYSTEM_TRAY_S" + std::to_string(screenNumber(connection));
    const std::array<std::string_view, 2> names{selectionName, "MANAGER"};
    const auto atoms = connection.atoms(names);
    selection_ = atoms[0];
    announcement_ = atoms[1];
    events_ = connection.addEventHandler([this](const auto& event) { handle(event); });
    // A new tray announces itself to those who listen to the root window.
    selectEvents(connection, connection.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    findManager();
}

void XembedTray::handle(const xcb_generic_event_t& event) {
    const auto type = event.response_type & 0x7FU;
    if (type == XCB_CLIENT_MESSAGE) {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        if (message.type == announcement_ && message.data.data32[1] == selection_) {
            follow();
        }
    } else if (type == XCB_DESTROY_NOTIFY && manager_ != XCB_WINDOW_NONE &&
               reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window == manager_) {
        // Its successor may be there already, and even have the same number.
        manager_ = XCB_WINDOW_NONE;
        onChange_();
        follow();
    }
}

void XembedTray::follow() {
    const auto before = manager_;
    findManager();
    if (manager_ != before) {
        onChange_();
    }
}

void XembedTray::findManager() {
    // The second question is asked after the events have been selected, so that no end goes unnoticed.
    while (true) {
        manager_ = selectionOwner(connection_, selection_);
        if (manager_ == XCB_WINDOW_NONE) {
            return;
        }
        selectEvents(connection_, manager_, XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE);
        if (selectionOwner(connection_, selection_) == manager_) {
            return;
        }
    }
}

} // namespace LinuxPlatform
