#include "platform/linux/x11/X11Connection.h"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <algorithm>
#include <utility>

namespace LinuxPlatform {
namespace {

xcb_screen_t* screenNumbered(xcb_connection_t* connection, int number) {
    auto iterator = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && iterator.rem > 1; --number) {
        xcb_screen_next(&iterator);
    }
    return iterator.data;
}

} // namespace

std::unique_ptr<X11Connection> X11Connection::open() {
    int screenNumber = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, &screenNumber));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return nullptr;
    }
    auto* const screen = screenNumbered(connection.get(), screenNumber);
    return std::unique_ptr<X11Connection>(new X11Connection(std::move(connection), screen));
}

X11Connection::X11Connection(std::unique_ptr<xcb_connection_t, Disconnect> connection, xcb_screen_t* screen)
    : connection_(std::move(connection)),
      screen_(screen) {
    auto notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_.get()), QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [this, link = notifier.get()] {
                         dispatchEvents();
                         // The socket of a dead server would be readable for ever.
                         link->setEnabled(isAlive());
                     });
    // Events that arrived together with a reply are in memory already: the socket will not announce them.
    if (auto* const dispatcher = QAbstractEventDispatcher::instance()) {
        QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, notifier.get(),
                         [this] { dispatchQueuedEvents(); });
    }
    loopLink_ = std::move(notifier);
}

X11Connection::~X11Connection() = default;

bool X11Connection::isAlive() const {
    return xcb_connection_has_error(connection_.get()) == 0;
}

std::vector<xcb_atom_t> X11Connection::atoms(std::span<const std::string_view> names) {
    std::vector<xcb_intern_atom_cookie_t> cookies;
    cookies.reserve(names.size());
    for (const auto name : names) {
        cookies.push_back(
            xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.data()));
    }
    std::vector<xcb_atom_t> atoms;
    atoms.reserve(names.size());
    for (const auto cookie : cookies) {
        const auto answer = reply<xcb_intern_atom_reply>(cookie);
        atoms.push_back(answer ? answer->atom : xcb_atom_t{XCB_ATOM_NONE});
    }
    return atoms;
}

Platform::Subscription X11Connection::addEventHandler(EventHandler handler) {
    return handlers_.add(std::move(handler));
}

void X11Connection::dispatchEvents() {
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        dispatch(*event);
    }
}

void X11Connection::dispatchQueuedEvents() {
    while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_queued_event(connection_.get())}) {
        dispatch(*event);
    }
}

void X11Connection::countRoundTrip(unsigned sequence) {
    // Sequence numbers wrap around.
    if (static_cast<std::int32_t>(sequence - carriedSequence_) > 0) {
        ++roundTrips_;
        // The cheapest request of all tells where we are.
        carriedSequence_ = xcb_no_operation(connection_.get()).sequence;
    }
}

void X11Connection::dispatch(const xcb_generic_event_t& event) {
    if (event.response_type == 0) {
        return;
    }
    const auto& notification = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (event.response_type == XCB_PROPERTY_NOTIFY && notification.window == clockWindow_) {
        clockTime_ = notification.time;
        return;
    }
    handlers_.tell(event);
}

void X11Connection::flush() {
    xcb_flush(connection_.get());
}

xcb_timestamp_t X11Connection::serverTime() {
    if (clockWindow_ == XCB_WINDOW_NONE) {
        clockWindow_ = xcb_generate_id(get());
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_create_window(get(), XCB_COPY_FROM_PARENT, clockWindow_, root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    }
    // Nothing is added: it is the event that counts, which is here before the answer is.
    xcb_change_property(get(), XCB_PROP_MODE_APPEND, clockWindow_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                        nullptr);
    static_cast<void>(reply<xcb_get_input_focus_reply>(xcb_get_input_focus(get())));
    dispatchEvents();
    return clockTime_;
}

void X11Connection::sendToWindowManager(xcb_window_t window, xcb_atom_t type,
                                        std::span<const std::uint32_t> data) {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    std::ranges::copy(data.first(std::min(data.size(), std::size_t{5})), message.data.data32);
    xcb_send_event(connection_.get(), 0, root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

} // namespace LinuxPlatform
