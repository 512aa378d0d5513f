#include "platform/linux/windows/x11/X11ManagerEcho.h"

#include <array>
#include <string_view>
#include <utility>

namespace LinuxPlatform {

X11ManagerEcho::X11ManagerEcho(X11Connection& connection) : connection_(connection) {
    const auto atoms =
        connection.atoms(std::array<std::string_view, 2>{"_NET_REQUEST_FRAME_EXTENTS", "_NET_FRAME_EXTENTS"});
    request_ = atoms[0];
    answer_ = atoms[1];
    eventHandler_ = connection.addEventHandler([this](const auto& event) { handleEvent(event); });
}

X11ManagerEcho::~X11ManagerEcho() {
    forget();
}

void X11ManagerEcho::ask(std::function<void()> onAnswer) {
    forget();
    onAnswer_ = std::move(onAnswer);
    window_ = xcb_generate_id(connection_.get());
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window_, connection_.root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    connection_.sendToWindowManager(window_, request_, {});
    connection_.flush();
}

void X11ManagerEcho::forget() {
    if (window_ != XCB_WINDOW_NONE) {
        xcb_destroy_window(connection_.get(), std::exchange(window_, XCB_WINDOW_NONE));
    }
    onAnswer_ = nullptr;
}

void X11ManagerEcho::handleEvent(const xcb_generic_event_t& event) {
    const auto& notification = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (event.response_type == XCB_PROPERTY_NOTIFY && notification.window == window_ &&
        notification.atom == answer_) {
        const auto onAnswer = std::exchange(onAnswer_, nullptr);
        forget();
        onAnswer();
    }
}

} // namespace LinuxPlatform
