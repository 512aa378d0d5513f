#include "platform/linux/departures/X11WorkspaceSwitches.h"

#include "platform/linux/x11/X11Property.h"

#include <array>
#include <string_view>
#include <utility>

namespace LinuxPlatform {

X11WorkspaceSwitches::X11WorkspaceSwitches(X11Connection& connection, std::function<void()> didSwitch)
    : connection_(connection),
      didSwitch_(std::move(didSwitch)),
      currentDesktop_(connection.atoms(std::array{std::string_view("_NET_CURRENT_DESKTOP")}).front()) {
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
    shown_ = current();
    events_ = connection.addEventHandler([this](const auto& event) { handle(event); });
}

void X11WorkspaceSwitches::handle(const xcb_generic_event_t& event) {
    constexpr std::uint8_t sentMark = 0x80;
    const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if ((event.response_type & ~sentMark) != XCB_PROPERTY_NOTIFY || change.window != connection_.root() ||
        change.atom != currentDesktop_) {
        return;
    }
    const auto now = current();
    const auto before = std::exchange(shown_, now);
    if (before && now && before != now) {
        didSwitch_();
    }
}

std::optional<std::uint32_t> X11WorkspaceSwitches::current() {
    const auto reply = connection_.reply<xcb_get_property_reply>(
        xcb_get_property(connection_.get(), 0, connection_.root(), currentDesktop_, XCB_ATOM_CARDINAL, 0, 1));
    const auto numbers = numbersIn(reply.get());
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

} // namespace LinuxPlatform
