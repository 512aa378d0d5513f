#include "bench/BareWindows.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <span>

namespace Bench {
namespace {

template <class Reply>
using Pointer = std::unique_ptr<Reply, decltype(&std::free)>;

template <class Reply>
Pointer<Reply> own(Reply* reply) {
    return {reply, &std::free};
}

constexpr std::uint32_t longestList = 65536;
/// As many as Curtain reads of each window.
constexpr int propertiesOfAWindow = 9;

xcb_atom_t atomNamed(xcb_connection_t* connection, const char* name) {
    const auto cookie = xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(std::strlen(name)), name);
    return own(xcb_intern_atom_reply(connection, cookie, nullptr))->atom;
}

std::vector<std::uint32_t> numbersIn(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    const auto* const first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    return {first, first + reply->value_len};
}

xcb_get_property_cookie_t ask(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property) {
    return xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestList);
}

} // namespace

BareWindows::BareWindows(const std::vector<xcb_window_t>& windows)
    : connection_(xcb_connect(nullptr, nullptr), &xcb_disconnect),
      windows_(windows),
      root_(xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root),
      state_(atom("_NET_WM_STATE")),
      hiddenState_(atom("_NET_WM_STATE_HIDDEN")),
      managerState_(atom("WM_STATE")),
      changeState_(atom("WM_CHANGE_STATE")) {
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    for (const auto window : windows_) {
        xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
    }
    read({windows_.begin(), windows_.end()});
}

void BareWindows::request(bool isHidden) {
    constexpr std::uint32_t iconic = 3;
    constexpr std::uint32_t pager = 2;
    for (const auto window : windows_) {
        if (isHidden) {
            send(window, changeState_, {iconic});
        }
        send(window, state_, {isHidden ? 1U : 0U, hiddenState_, 0, pager});
    }
    xcb_flush(connection_.get());
}

void BareWindows::waitUntil(bool isHidden) {
    while ((isHidden ? hidden_ : shown_).size() != windows_.size()) {
        std::set<xcb_window_t> changed;
        for (auto event = own(xcb_wait_for_event(connection_.get())); event;
             event = own(xcb_poll_for_event(connection_.get()))) {
            const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
            if (event->response_type == XCB_PROPERTY_NOTIFY &&
                (change.atom == state_ || change.atom == managerState_)) {
                changed.insert(change.window);
            }
        }
        read(changed);
    }
}

xcb_atom_t BareWindows::atom(const char* name) {
    return atomNamed(connection_.get(), name);
}

void BareWindows::send(xcb_window_t window, xcb_atom_t type, std::vector<std::uint32_t> data) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    std::ranges::copy(data, message.data.data32);
    xcb_send_event(connection_.get(), 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

void BareWindows::read(const std::set<xcb_window_t>& windows) {
    struct Question {
        xcb_window_t window;
        xcb_get_property_cookie_t state;
        xcb_get_property_cookie_t managerState;
    };
    std::vector<Question> questions;
    for (const auto window : windows) {
        questions.push_back(
            {window, ask(connection_.get(), window, state_), ask(connection_.get(), window, managerState_)});
    }
    for (const auto& question : questions) {
        const auto states =
            numbersIn(own(xcb_get_property_reply(connection_.get(), question.state, nullptr)).get());
        const auto manager =
            numbersIn(own(xcb_get_property_reply(connection_.get(), question.managerState, nullptr)).get());
        const bool isHidden = std::ranges::count(states, hiddenState_) > 0;
        hidden_.erase(question.window);
        shown_.erase(question.window);
        if (!manager.empty()) {
            (isHidden ? hidden_ : shown_).insert(question.window);
        }
    }
}

std::size_t readProperties() {
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    auto* const xcb = connection.get();
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data->root;
    const auto list = numbersIn(
        own(xcb_get_property_reply(xcb, ask(xcb, root, atomNamed(xcb, "_NET_CLIENT_LIST")), nullptr)).get());
    std::vector<xcb_get_property_cookie_t> cookies;
    for (const auto window : list) {
        for (int count = 0; count < propertiesOfAWindow; ++count) {
            cookies.push_back(ask(xcb, window, XCB_ATOM_WM_CLASS));
        }
    }
    std::size_t read = 0;
    for (const auto cookie : cookies) {
        read += own(xcb_get_property_reply(xcb, cookie, nullptr)) ? 1U : 0U;
    }
    return read / propertiesOfAWindow;
}

} // namespace Bench
