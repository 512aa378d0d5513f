#include "platform/linux/windows/X11WindowModel.h"

#include <xcb/res.h>

#include <algorithm>
#include <array>
#include <set>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t longestList = 1U << 16U;

/// In the order of `X11WindowModel::Atom`.
constexpr std::array<std::string_view, X11WindowModel::atomCount> atomNames{
    "_NET_CLIENT_LIST",
    "_NET_CLIENT_LIST_STACKING",
    "_NET_ACTIVE_WINDOW",
    "_NET_CURRENT_DESKTOP",
    "_NET_WM_STATE",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_PID",
    "_NET_WM_WINDOW_TYPE",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_DESKTOP",
    "_KDE_NET_WM_DESKTOP_FILE",
    "_GTK_APPLICATION_ID",
    "WM_CHANGE_STATE",
};

using PropertyReply = XcbPointer<xcb_get_property_reply_t>;

std::span<const std::uint32_t> numbersIn(const xcb_get_property_reply_t& reply) {
    if (reply.format != 32) {
        return {};
    }
    return {static_cast<const std::uint32_t*>(xcb_get_property_value(&reply)), reply.value_len};
}

std::optional<std::uint32_t> numberIn(const xcb_get_property_reply_t& reply) {
    const auto numbers = numbersIn(reply);
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

std::vector<std::uint32_t> listIn(const xcb_get_property_reply_t& reply) {
    const auto numbers = numbersIn(reply);
    return {numbers.begin(), numbers.end()};
}

std::string_view bytesIn(const xcb_get_property_reply_t& reply) {
    if (reply.format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(&reply)), reply.value_len};
}

/// Up to the first zero byte.
std::string textIn(std::string_view bytes) {
    return std::string(bytes.substr(0, bytes.find('\0')));
}

void readClass(X11Window& window, const xcb_get_property_reply_t& reply) {
    const auto bytes = bytesIn(reply);
    window.instanceName = textIn(bytes);
    window.className = textIn(bytes.substr(std::min(window.instanceName.size() + 1, bytes.size())));
}

} // namespace

struct X11WindowModel::Property {
    /// One of our atoms, or one that every server has.
    std::variant<Atom, xcb_atom_t> name;
    /// In units of four bytes: what is longer is cut.
    std::uint32_t longestValue;
    /// Takes an absent property as an empty one.
    void (*read)(X11Window& window, const xcb_get_property_reply_t& reply);

    xcb_atom_t atomIn(const X11WindowModel& model) const {
        const auto* const own = std::get_if<Atom>(&name);
        return own != nullptr ? model.atom(*own) : std::get<xcb_atom_t>(name);
    }
};

const std::vector<X11WindowModel::Property>& X11WindowModel::properties() {
    using Reply = xcb_get_property_reply_t;
    static const std::vector<Property> list{
        {xcb_atom_t{XCB_ATOM_WM_CLASS}, 256, readClass},
        {xcb_atom_t{XCB_ATOM_WM_CLIENT_MACHINE}, 64,
         [](X11Window& window, const Reply& reply) { window.clientMachine = textIn(bytesIn(reply)); }},
        {netWmState, 64, [](X11Window& window, const Reply& reply) { window.state = listIn(reply); }},
        {netWmPid, 1,
         [](X11Window& window, const Reply& reply) { window.declaredProcess = numberIn(reply); }},
        {netWmWindowType, 64, [](X11Window& window, const Reply& reply) { window.type = listIn(reply); }},
        {netWmDesktop, 1, [](X11Window& window, const Reply& reply) { window.desktop = numberIn(reply); }},
        {kdeNetWmDesktopFile, 256,
         [](X11Window& window, const Reply& reply) { window.desktopFile = textIn(bytesIn(reply)); }},
        {gtkApplicationId, 256,
         [](X11Window& window, const Reply& reply) { window.applicationId = textIn(bytesIn(reply)); }},
    };
    return list;
}

/// The replies about one window that are on their way.
class X11WindowModel::Reading {
public:
    Reading(X11WindowModel& model, xcb_window_t window, const Entry& entry)
        : model_(model),
          window_(window),
          isNew_(entry.isNew) {
        auto* const connection = model.connection_.get();
        if (isNew_) {
            const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
            xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
        }
        for (std::size_t index = 0; index < properties().size(); ++index) {
            if (isNew_ || (entry.staleProperties >> index & 1U) != 0) {
                const auto& property = properties()[index];
                requests_.emplace_back(index,
                                       xcb_get_property(connection, 0, window, property.atomIn(model),
                                                        XCB_GET_PROPERTY_TYPE_ANY, 0, property.longestValue));
            }
        }
        if (isNew_ && model.hasProcessQuery_) {
            const xcb_res_client_id_spec_t query{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
            processRequest_ = xcb_res_query_client_ids(connection, 1, &query);
        }
    }

    xcb_window_t window() const { return window_; }

    /// False when the window is gone.
    bool finish(X11Window& window) {
        bool isThere = false;
        for (const auto& [index, cookie] : requests_) {
            const PropertyReply reply(xcb_get_property_reply(model_.connection_.get(), cookie, nullptr));
            if (reply) {
                isThere = true;
                properties()[index].read(window, *reply);
            }
        }
        if (processRequest_) {
            readProcess(window);
        }
        return isThere;
    }

private:
    void readProcess(X11Window& window) const {
        const XcbPointer<xcb_res_query_client_ids_reply_t> reply(
            xcb_res_query_client_ids_reply(model_.connection_.get(), *processRequest_, nullptr));
        if (!reply) {
            return;
        }
        for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem > 0;
             xcb_res_client_id_value_next(&id)) {
            const bool isProcess = (id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0;
            if (isProcess && xcb_res_client_id_value_value_length(id.data) > 0) {
                const auto process = *xcb_res_client_id_value_value(id.data);
                window.connectedProcess = process != 0 ? std::optional(process) : std::nullopt;
            }
        }
    }

    X11WindowModel& model_;
    xcb_window_t window_;
    bool isNew_;
    std::vector<std::pair<std::size_t, xcb_get_property_cookie_t>> requests_;
    std::optional<xcb_res_query_client_ids_cookie_t> processRequest_;
};

X11WindowModel::X11WindowModel(X11Connection& connection, std::function<void()> onChanged)
    : connection_(connection),
      onChanged_(std::move(onChanged)) {
    xcb_prefetch_extension_data(connection.get(), &xcb_res_id);
    atoms_ = connection.atoms(atomNames);
    const auto* const resourceExtension = xcb_get_extension_data(connection.get(), &xcb_res_id);
    if (resourceExtension != nullptr && resourceExtension->present != 0) {
        const XcbPointer<xcb_res_query_version_reply_t> version(xcb_res_query_version_reply(
            connection.get(), xcb_res_query_version(connection.get(), 1, 2), nullptr));
        hasProcessQuery_ = version && (version->server_major > 1 || version->server_minor >= 2);
    }
    eventHandler_ = connection.addEventHandler([this](const auto& event) { handleEvent(event); });
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
}

X11WindowModel::Changes X11WindowModel::update() {
    Changes changes;
    if (isClientListStale_) {
        readClientList(changes);
    }
    if (areWindowsStale_) {
        readStaleProperties(changes);
    }
    if (isActiveWindowStale_) {
        readActiveWindow(changes);
    }
    std::erase_if(changes.opened, [this](auto window) { return find(window) == nullptr; });
    return std::exchange(isFirstUpdate_, false) ? Changes{} : changes;
}

const X11Window* X11WindowModel::find(xcb_window_t window) const {
    const auto found = entries_.find(window);
    return found == entries_.end() ? nullptr : &found->second.window;
}

bool X11WindowModel::isHidden(const X11Window& window) const {
    return std::ranges::find(window.state, atom(netWmStateHidden)) != window.state.end();
}

void X11WindowModel::expectHidden(xcb_window_t window) {
    if (const auto entry = entries_.find(window); entry != entries_.end()) {
        entry->second.isExpectedHidden = true;
    }
}

std::vector<xcb_window_t> X11WindowModel::stackingOrder() {
    return readRootList(netClientListStacking);
}

std::optional<std::uint32_t> X11WindowModel::currentDesktop() {
    const auto list = readRootList(netCurrentDesktop);
    return list.empty() ? std::nullopt : std::optional(list.front());
}

void X11WindowModel::handleEvent(const xcb_generic_event_t& event) {
    // The highest bit tells events that clients sent.
    switch (event.response_type & 0x7FU) {
    case XCB_PROPERTY_NOTIFY: {
        const auto& notification = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notification.window != connection_.root()) {
            markStale(notification.window, notification.atom);
        } else if (notification.atom == atom(netClientList)) {
            isClientListStale_ = true;
            onChanged_();
        } else if (notification.atom == atom(netActiveWindow)) {
            isActiveWindowStale_ = true;
            onChanged_();
        }
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const auto& notification = reinterpret_cast<const xcb_destroy_notify_event_t&>(event);
        if (entries_.erase(notification.window) > 0) {
            std::erase(clientList_, notification.window);
            ++generation_;
            onChanged_();
        }
        break;
    }
    default:
        break;
    }
}

void X11WindowModel::markStale(xcb_window_t window, xcb_atom_t property) {
    const auto entry = entries_.find(window);
    const auto bit = bitOf(property);
    if (entry != entries_.end() && bit != 0) {
        entry->second.staleProperties |= bit;
        areWindowsStale_ = true;
        onChanged_();
    }
}

std::uint32_t X11WindowModel::bitOf(xcb_atom_t property) const {
    const auto found =
        std::ranges::find(properties(), property, [this](const Property& one) { return one.atomIn(*this); });
    return found == properties().end() ? 0 : 1U << static_cast<unsigned>(found - properties().begin());
}

void X11WindowModel::readClientList(Changes& changes) {
    isClientListStale_ = false;
    clientList_ = readRootList(netClientList);
    ++generation_;
    const std::set<xcb_window_t> listed(clientList_.begin(), clientList_.end());
    for (auto& [window, entry] : entries_) {
        entry.window.isManaged = entry.window.isManaged && listed.contains(window);
    }
    for (const auto window : clientList_) {
        auto& entry = entries_[window];
        entry.window.id = window;
        if (!std::exchange(entry.window.isManaged, true)) {
            changes.opened.push_back(window);
        }
        areWindowsStale_ = areWindowsStale_ || entry.isNew;
    }
}

void X11WindowModel::readActiveWindow(Changes& changes) {
    isActiveWindowStale_ = false;
    const auto list = readRootList(netActiveWindow);
    const auto window = list.empty() ? xcb_window_t{XCB_WINDOW_NONE} : list.front();
    if (std::exchange(activeWindow_, window) != window && window != XCB_WINDOW_NONE) {
        changes.activated = window;
    }
}

void X11WindowModel::readStaleProperties(Changes& changes) {
    areWindowsStale_ = false;
    std::vector<Reading> readings;
    for (const auto& [window, entry] : entries_) {
        if (entry.isNew || entry.staleProperties != 0) {
            readings.emplace_back(*this, window, entry);
        }
    }
    for (auto& reading : readings) {
        auto& entry = entries_.at(reading.window());
        const auto before = entry.window;
        const bool wasNew = std::exchange(entry.isNew, false);
        const bool isStateNews = (entry.staleProperties & bitOf(atom(netWmState))) != 0;
        entry.staleProperties = 0;
        if (!reading.finish(entry.window)) {
            std::erase(clientList_, reading.window());
            entries_.erase(reading.window());
            continue;
        }
        if (wasNew) {
            continue;
        }
        const auto& now = entry.window;
        const auto identity = [](const X11Window& window) {
            return std::tie(window.instanceName, window.className, window.desktopFile, window.applicationId,
                            window.declaredProcess);
        };
        if (identity(before) != identity(now)) {
            changes.identified.push_back(now.id);
        }
        const bool wasHidden =
            isHidden(before) || (isStateNews && std::exchange(entry.isExpectedHidden, false));
        if (now.isManaged && wasHidden && !isHidden(now)) {
            changes.returned.push_back(now.id);
        }
    }
    ++generation_;
}

std::vector<std::uint32_t> X11WindowModel::readRootList(Atom name) {
    const PropertyReply reply(
        xcb_get_property_reply(connection_.get(),
                               xcb_get_property(connection_.get(), 0, connection_.root(), atom(name),
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, longestList),
                               nullptr));
    return reply ? listIn(*reply) : std::vector<std::uint32_t>{};
}

} // namespace LinuxPlatform
