#include "platform/linux/windows/x11/X11Popups.h"

#include "platform/linux/x11/X11ClientProcess.h"
#include "platform/linux/x11/X11Property.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

/// In the order of `X11Popups::Atom`; the types that are left alone come last.
constexpr std::array<std::string_view, 11> atomNames{
    "_NET_WM_WINDOW_TYPE",
    "WM_CLIENT_LEADER",
    "_NET_WM_WINDOW_TYPE_MENU",
    "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",
    "_NET_WM_WINDOW_TYPE_COMBO",
    "_NET_WM_WINDOW_TYPE_DND",
    "_NET_WM_WINDOW_TYPE_TOOLBAR",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
};

/// The place of the group's leader in WM_HINTS, and the flag that says that it is there.
constexpr std::size_t groupPosition = 8;
constexpr std::uint32_t hasGroup = 64;

} // namespace

/// The replies about one window that are on their way.
class X11Popups::Reading {
public:
    Reading(X11Popups& popups, xcb_window_t window)
        : popups_(popups),
          window_(window),
          attributes_(xcb_get_window_attributes(popups.connection_->get(), window)),
          types_(ask(popups.atoms_[windowType])),
          transientFor_(ask(XCB_ATOM_WM_TRANSIENT_FOR)),
          leader_(ask(popups.atoms_[clientLeader])),
          hints_(ask(XCB_ATOM_WM_HINTS)) {
        if (popups.hasProcessQuery_) {
            process_ = askClientProcess(*popups.connection_, window);
        }
    }

    xcb_window_t window() const { return window_; }

    /// Absent for whatever is no pop-up on the screen.
    std::optional<X11Popup> finish() {
        auto& connection = *popups_.connection_;
        const auto attributes = connection.reply<xcb_get_window_attributes_reply>(attributes_);
        const auto types = connection.reply<xcb_get_property_reply>(types_);
        X11Popup popup;
        for (const auto cookie : {transientFor_, leader_}) {
            const auto reply = connection.reply<xcb_get_property_reply>(cookie);
            const auto windows = numbersIn(reply.get());
            popup.owners.insert(popup.owners.end(), windows.begin(), windows.end());
        }
        const auto hints = connection.reply<xcb_get_property_reply>(hints_);
        const auto numbers = numbersIn(hints.get());
        if (numbers.size() > groupPosition && (numbers.front() & hasGroup) != 0) {
            popup.owners.push_back(numbers[groupPosition]);
        }
        if (process_) {
            popup.process = receiveClientProcess(connection, *process_);
        }
        popup.client = window_ & ~xcb_get_setup(connection.get())->resource_id_mask;
        const bool isPopup = attributes && attributes->override_redirect != 0 &&
                             attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
                             attributes->map_state == XCB_MAP_STATE_VIEWABLE &&
                             !popups_.isLeftAlone(numbersIn(types.get()));
        return isPopup ? std::optional(std::move(popup)) : std::nullopt;
    }

private:
    xcb_get_property_cookie_t ask(xcb_atom_t property) const {
        constexpr std::uint32_t longestValue = 64;
        return xcb_get_property(popups_.connection_->get(), 0, window_, property, XCB_GET_PROPERTY_TYPE_ANY,
                                0, longestValue);
    }

    X11Popups& popups_;
    xcb_window_t window_;
    xcb_get_window_attributes_cookie_t attributes_;
    xcb_get_property_cookie_t types_;
    xcb_get_property_cookie_t transientFor_;
    xcb_get_property_cookie_t leader_;
    xcb_get_property_cookie_t hints_;
    std::optional<xcb_res_query_client_ids_cookie_t> process_;
};

std::unique_ptr<X11Popups> X11Popups::open(Judge isToBeTaken) {
    auto connection = X11Connection::open();
    return connection
               ? std::unique_ptr<X11Popups>(new X11Popups(std::move(connection), std::move(isToBeTaken)))
               : nullptr;
}

X11Popups::X11Popups(std::unique_ptr<X11Connection> connection, Judge isToBeTaken)
    : connection_(std::move(connection)),
      isToBeTaken_(std::move(isToBeTaken)) {
    static_assert(atomNames.size() == atomCount);
    auto* const xcb = connection_->get();
    xcb_prefetch_extension_data(xcb, &xcb_res_id);
    atoms_ = connection_->atoms(atomNames);
    const auto* const resourceExtension = xcb_get_extension_data(xcb, &xcb_res_id);
    hasProcessQuery_ = resourceExtension != nullptr && resourceExtension->present != 0;
    eventHandler_ = connection_->addEventHandler([this](const auto& event) { handleEvent(event); });

    container_ = xcb_generate_id(xcb);
    const std::array<std::uint32_t, 2> values{1U, XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY};
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, container_, connection_->root(), 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb, connection_->root(), XCB_CW_EVENT_MASK, &mask);
    lookAround();
}

X11Popups::~X11Popups() {
    for (const auto& [window, known] : known_) {
        if (known.isTaken) {
            giveBack(window);
        }
    }
    connection_->flush();
}

void X11Popups::judgeAnew() {
    connection_->dispatchEvents();
    for (auto known = known_.begin(); known != known_.end();) {
        const auto window = known->first;
        auto& popup = known->second;
        ++known;
        judge(window, popup);
    }
    connection_->flush();
}

void X11Popups::handleEvent(const xcb_generic_event_t& event) {
    switch (event.response_type) {
    case XCB_MAP_NOTIFY:
        mapped(reinterpret_cast<const xcb_map_notify_event_t&>(event));
        break;
    case XCB_UNMAP_NOTIFY:
        unmapped(reinterpret_cast<const xcb_unmap_notify_event_t&>(event));
        break;
    case XCB_DESTROY_NOTIFY:
        known_.erase(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
        break;
    default:
        break;
    }
}

void X11Popups::mapped(const xcb_map_notify_event_t& event) {
    if (event.event == connection_->root() && event.override_redirect != 0) {
        learn(std::array{event.window});
        connection_->flush();
    }
}

void X11Popups::unmapped(const xcb_unmap_notify_event_t& event) {
    const auto found = known_.find(event.window);
    if (found == known_.end()) {
        return;
    }
    // Putting a window elsewhere takes it off the screen for a moment. What its program does inside comes
    // from there.
    const bool isWithdrawn = event.event == container_ || !found->second.isTaken;
    if (isWithdrawn && found->second.isTaken) {
        giveBack(event.window);
        connection_->flush();
    }
    if (isWithdrawn) {
        known_.erase(found);
    }
}

void X11Popups::lookAround() {
    const auto tree =
        connection_->reply<xcb_query_tree_reply>(xcb_query_tree(connection_->get(), connection_->root()));
    if (tree) {
        learn({xcb_query_tree_children(tree.get()), tree->children_len});
    }
    connection_->flush();
}

void X11Popups::learn(std::span<const xcb_window_t> windows) {
    std::vector<Reading> readings;
    for (const auto window : windows) {
        readings.emplace_back(*this, window);
    }
    for (auto& reading : readings) {
        if (auto popup = reading.finish()) {
            auto& known = known_[reading.window()];
            known.popup = std::move(*popup);
            judge(reading.window(), known);
        }
    }
}

bool X11Popups::isLeftAlone(std::span<const xcb_atom_t> types) const {
    const auto kinds = std::span(atoms_).subspan(firstTypeLeftAlone);
    return std::ranges::find_first_of(types, kinds) != types.end();
}

void X11Popups::judge(xcb_window_t window, Known& known) {
    const bool isToBeTaken = isToBeTaken_(known.popup);
    if (known.isTaken == isToBeTaken) {
        return;
    }
    known.isTaken = isToBeTaken;
    if (!isToBeTaken) {
        giveBack(window);
    } else if (!take(window)) {
        giveBack(window);
        known_.erase(window);
    }
}

bool X11Popups::take(xcb_window_t window) {
    moveInto(container_, window, XCB_SET_MODE_INSERT);
    const auto attributes = connection_->reply<xcb_get_window_attributes_reply>(
        xcb_get_window_attributes(connection_->get(), window));
    return attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
}

void X11Popups::giveBack(xcb_window_t window) {
    moveInto(connection_->root(), window, XCB_SET_MODE_DELETE);
}

void X11Popups::moveInto(xcb_window_t parent, xcb_window_t window, std::uint8_t saveSetMode) {
    auto* const xcb = connection_->get();
    const auto place = connection_->reply<xcb_get_geometry_reply>(xcb_get_geometry(xcb, window));
    if (place) {
        xcb_change_save_set(xcb, saveSetMode, window);
        xcb_reparent_window(xcb, window, parent, place->x, place->y);
    }
}

} // namespace LinuxPlatform
