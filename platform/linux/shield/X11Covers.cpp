#include "platform/linux/shield/X11Covers.h"

#include "platform/linux/windows/x11/X11WindowText.h"
#include "platform/linux/x11/X11ClientProcess.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

/// In the order of `X11Covers::Atom`.
constexpr std::array<std::string_view, 9> atomNames{
    "_KDE_NET_WM_DESKTOP_FILE", "_GTK_APPLICATION_ID",
    "_NET_WM_WINDOW_TYPE",      "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE_DOCK", "_XEMBED_INFO",
    "_NET_SUPPORTING_WM_CHECK", "_NET_WM_NAME",
    "_NET_CLIENT_LIST",
};

/// As they call themselves.
constexpr std::array<std::string_view, 2> triedManagers{"Openbox", "Xfwm4"};

/// Larger than any screen, and small enough for every coordinate.
constexpr std::uint16_t coverSize = 16384;
/// Opaque in windows with an alpha channel too.
constexpr std::uint32_t coverColour = 0xFF303030;
constexpr std::uint32_t longestText = 256;
constexpr std::uint32_t longestWindowList = 1U << 16U;

constexpr std::uint32_t clientEvents = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
constexpr std::uint32_t parentEvents = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;

template <class Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

} // namespace

/// The replies about one window that are on their way.
class X11Covers::Reading {
public:
    Reading(X11Covers& covers, xcb_window_t window)
        : covers_(covers),
          window_(window),
          class_(ask(XCB_ATOM_WM_CLASS)),
          desktopFile_(ask(covers.atoms_[desktopFile])),
          applicationId_(ask(covers.atoms_[applicationId])),
          types_(ask(covers.atoms_[windowType])),
          embedding_(ask(covers.atoms_[embeddingInfo])) {
        if (covers.hasProcessQuery_) {
            process_ = askClientProcess(*covers.connection_, window);
        }
    }

    xcb_window_t window() const { return window_; }
    /// Whether it was when it was read.
    bool isThere() const { return isThere_; }

    /// Absent while the window does not say whose it is, and for whatever is part of another program's
    /// window, of the desktop or a panel.
    std::optional<Question> finish(bool isPopup) {
        Question question;
        question.window = window_;
        auto& hints = question.hints;
        const auto names = receive(class_);
        isThere_ = names != nullptr;
        readClassInto(hints, names.get());
        hints.desktopFile = textIn(bytesIn(receive(desktopFile_).get()));
        hints.applicationId = textIn(bytesIn(receive(applicationId_).get()));
        const auto types = receive(types_);
        const auto embedding = receive(embedding_);
        if (process_) {
            hints.process = receiveClientProcess(*covers_.connection_, *process_);
        }
        const bool isElsewhere = embedding && embedding->type != XCB_ATOM_NONE;
        const std::array places{covers_.atoms_[windowTypeDesktop], covers_.atoms_[windowTypeDock]};
        const auto kinds = numbersIn(types.get());
        const bool isPlace = std::ranges::find_first_of(kinds, places) != kinds.end();
        const bool isNamed = isPopup || !hints.className.empty() || !hints.instanceName.empty();
        return isNamed && !isElsewhere && !isPlace ? std::optional(std::move(question)) : std::nullopt;
    }

private:
    xcb_get_property_cookie_t ask(xcb_atom_t property) const {
        return xcb_get_property(covers_.connection_->get(), 0, window_, property, XCB_GET_PROPERTY_TYPE_ANY,
                                0, longestText);
    }
    XcbPointer<xcb_get_property_reply_t> receive(xcb_get_property_cookie_t cookie) {
        return covers_.connection_->reply<xcb_get_property_reply>(cookie);
    }

    X11Covers& covers_;
    xcb_window_t window_;
    xcb_get_property_cookie_t class_;
    xcb_get_property_cookie_t desktopFile_;
    xcb_get_property_cookie_t applicationId_;
    xcb_get_property_cookie_t types_;
    xcb_get_property_cookie_t embedding_;
    std::optional<xcb_res_query_client_ids_cookie_t> process_;
    bool isThere_ = false;
};

std::unique_ptr<X11Covers> X11Covers::open(Ask ask) {
    auto connection = X11Connection::open();
    return connection ? std::unique_ptr<X11Covers>(new X11Covers(std::move(connection), std::move(ask)))
                      : nullptr;
}

X11Covers::X11Covers(std::unique_ptr<X11Connection> connection, Ask ask)
    : connection_(std::move(connection)),
      ask_(std::move(ask)),
      idMask_(xcb_get_setup(connection_->get())->resource_id_mask),
      ownConnection_(xcb_get_setup(connection_->get())->resource_id_base) {
    static_assert(atomNames.size() == atomCount);
    xcb_prefetch_extension_data(connection_->get(), &xcb_res_id);
    atoms_ = connection_->atoms(atomNames);
    const auto* const resourceExtension = xcb_get_extension_data(connection_->get(), &xcb_res_id);
    hasProcessQuery_ = resourceExtension != nullptr && resourceExtension->present != 0;
    settling_.setSingleShot(true);
    QObject::connect(&settling_, &QTimer::timeout, &settling_, [this] { settle(); });
    eventHandler_ = connection_->addEventHandler([this](const auto& event) { handleEvent(event); });
}

void X11Covers::begin(const std::vector<xcb_window_t>& windows) {
    choose(connection_->root(), XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY);
    readManager();
    for (const auto window : windows) {
        clients_[window].isToBeCovered = true;
        if (isManagerTried_) {
            coverInside(window);
        }
    }
    connection_->flush();
    lookAround();
}

void X11Covers::take(const std::vector<Answer>& answers) {
    for (const auto& answer : answers) {
        const auto found = clients_.find(answer.window);
        if (found != clients_.end() && found->second.question == answer.number) {
            set(found->first, found->second, answer.isToBeCovered);
        }
    }
    connection_->flush();
}

void X11Covers::askAnew() {
    for (auto& [window, client] : clients_) {
        client.isStale = true;
    }
    isAnyStale_ = true;
    settleSoon();
}

void X11Covers::lookAround() {
    auto* const xcb = connection_->get();
    const auto tree = connection_->reply<xcb_query_tree_reply>(xcb_query_tree(xcb, connection_->root()));
    std::vector<std::pair<xcb_window_t, xcb_get_window_attributes_cookie_t>> others;
    if (tree) {
        for (const auto window : std::span(xcb_query_tree_children(tree.get()), tree->children_len)) {
            if (!isOwn(window) && connectionOf(window) != managerConnection_) {
                others.emplace_back(window, xcb_get_window_attributes(xcb, window));
            }
        }
    }
    for (const auto& [window, request] : others) {
        if (const auto attributes = connection_->reply<xcb_get_window_attributes_reply>(request)) {
            clients_[window].isPopup = attributes->override_redirect != 0;
        }
    }
    for (auto& [window, client] : clients_) {
        choose(window, covers_.contains(window) ? clientEvents | parentEvents : clientEvents);
        if (client.isCovered()) {
            protect(window, client);
        }
    }
    isListStale_ = true;
    isAnyStale_ = true;
    settle();
}

void X11Covers::readClientList() {
    const auto list = connection_->reply<xcb_get_property_reply>(
        xcb_get_property(connection_->get(), 0, connection_->root(), atoms_[clientList], XCB_ATOM_WINDOW, 0,
                         longestWindowList));
    for (const auto window : numbersIn(list.get())) {
        if (clients_.try_emplace(window).second) {
            choose(window, clientEvents);
            isAnyStale_ = true;
        }
    }
}

void X11Covers::readManager() {
    const auto request = [this](xcb_window_t window, xcb_atom_t property) {
        return connection_->reply<xcb_get_property_reply>(xcb_get_property(
            connection_->get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, longestText));
    };
    const auto check = request(connection_->root(), atoms_[managerCheck]);
    const auto windows = numbersIn(check.get());
    if (windows.empty()) {
        // Between two of them what is covered stays so.
        return;
    }
    managerWindow_ = windows.front();
    managerConnection_ = connectionOf(managerWindow_);
    choose(managerWindow_, XCB_EVENT_MASK_PROPERTY_CHANGE);
    const auto name = request(managerWindow_, atoms_[windowName]);
    if (!name || name->type == XCB_ATOM_NONE) {
        // It has not come to that yet.
        return;
    }
    isManagerTried_ = std::ranges::find(triedManagers, textIn(bytesIn(name.get()))) != triedManagers.end();
}

void X11Covers::managerChanged() {
    readManager();
    if (!isManagerTried_) {
        uncoverAll();
    }
    for (auto& [window, client] : clients_) {
        if (client.isCovered()) {
            protect(window, client);
        }
    }
    connection_->flush();
}

void X11Covers::handleEvent(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7FU) {
    case XCB_CREATE_NOTIFY:
        created(as<xcb_create_notify_event_t>(event));
        break;
    case XCB_REPARENT_NOTIFY:
        reparented(as<xcb_reparent_notify_event_t>(event));
        break;
    case XCB_MAP_NOTIFY:
        siblingChanged(as<xcb_map_notify_event_t>(event).event, as<xcb_map_notify_event_t>(event).window);
        break;
    case XCB_CONFIGURE_NOTIFY:
        siblingChanged(as<xcb_configure_notify_event_t>(event).event,
                       as<xcb_configure_notify_event_t>(event).window);
        break;
    case XCB_UNMAP_NOTIFY:
        coverUnmapped(as<xcb_unmap_notify_event_t>(event));
        break;
    case XCB_DESTROY_NOTIFY:
        destroyed(as<xcb_destroy_notify_event_t>(event));
        break;
    case XCB_PROPERTY_NOTIFY:
        propertyChanged(as<xcb_property_notify_event_t>(event));
        break;
    default:
        break;
    }
}

void X11Covers::created(const xcb_create_notify_event_t& event) {
    if (event.parent != connection_->root()) {
        siblingChanged(event.parent, event.window);
        return;
    }
    const auto maker = connectionOf(event.window);
    if (maker == ownConnection_ || maker == managerConnection_) {
        return;
    }
    // One with the same identifier may have gone unseen.
    uncover(event.window);
    auto& client = clients_.insert_or_assign(event.window, Client{}).first->second;
    client.isPopup = event.override_redirect != 0;
    choose(event.window, clientEvents);
    if (client.isPopup && areAllCoveredOf(maker)) {
        set(event.window, client, true);
    }
    isAnyStale_ = true;
    connection_->flush();
    settleSoon();
}

void X11Covers::reparented(const xcb_reparent_notify_event_t& event) {
    siblingChanged(event.event, event.window);
    const auto found = clients_.find(event.window);
    if (event.event != event.window || found == clients_.end()) {
        return;
    }
    found->second.frame = XCB_WINDOW_NONE;
    if (found->second.isCovered()) {
        protect(event.window, found->second);
        connection_->flush();
    }
}

void X11Covers::siblingChanged(xcb_window_t parent, xcb_window_t window) {
    if (parent != window && !isOwn(window) && covers_.contains(parent)) {
        toRaiseIn_.insert(parent);
        settleSoon();
    }
}

void X11Covers::coverUnmapped(const xcb_unmap_notify_event_t& event) {
    const auto found = covers_.find(event.event);
    if (found != covers_.end() && found->second == event.window) {
        xcb_map_window(connection_->get(), event.window);
        toRaiseIn_.insert(event.event);
        settleSoon();
    }
}

void X11Covers::destroyed(const xcb_destroy_notify_event_t& event) {
    clients_.erase(event.window);
    covers_.erase(event.window);
    toRaiseIn_.erase(event.window);
    // A program may destroy whatever is in its window, or the whole window.
    const auto parent = covers_.find(event.event);
    if (parent != covers_.end() && parent->second == event.window) {
        covers_.erase(parent);
        coverInside(event.event);
        connection_->flush();
    }
}

void X11Covers::propertyChanged(const xcb_property_notify_event_t& event) {
    if (event.window == connection_->root()) {
        if (event.atom == atoms_[managerCheck]) {
            managerChanged();
        } else if (event.atom == atoms_[clientList]) {
            // What was framed just before the first look around was in no other list.
            isListStale_ = true;
            settleSoon();
        }
        return;
    }
    if (event.window == managerWindow_ && event.atom == atoms_[windowName]) {
        managerChanged();
        return;
    }
    const std::array telling{xcb_atom_t{XCB_ATOM_WM_CLASS}, atoms_[desktopFile], atoms_[applicationId],
                             atoms_[windowType], atoms_[embeddingInfo]};
    const auto found = clients_.find(event.window);
    if (found != clients_.end() && std::ranges::find(telling, event.atom) != telling.end()) {
        found->second.isStale = true;
        isAnyStale_ = true;
        settleSoon();
    }
}

void X11Covers::settleSoon() {
    if (!settling_.isActive()) {
        settling_.start(0);
    }
}

void X11Covers::settle() {
    for (const auto parent : std::exchange(toRaiseIn_, {})) {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(connection_->get(), covers_.at(parent), XCB_CONFIG_WINDOW_STACK_MODE, &above);
    }
    connection_->flush();
    if (std::exchange(isListStale_, false)) {
        readClientList();
    }
    if (std::exchange(isAnyStale_, false)) {
        readStale();
    }
}

void X11Covers::readStale() {
    std::vector<Reading> readings;
    for (auto& [window, client] : clients_) {
        if (std::exchange(client.isStale, false)) {
            readings.emplace_back(*this, window);
        }
    }
    std::vector<Question> questions;
    for (auto& reading : readings) {
        auto& client = clients_.at(reading.window());
        client.question = 0;
        auto question = reading.finish(client.isPopup);
        if (!reading.isThere()) {
            // It went before its end could be told.
            uncover(reading.window());
            clients_.erase(reading.window());
        } else if (question) {
            client.question = question->number = ++lastQuestion_;
            questions.push_back(std::move(*question));
        } else {
            set(reading.window(), client, std::nullopt);
        }
    }
    connection_->flush();
    if (!questions.empty()) {
        ask_(std::move(questions));
    }
}

void X11Covers::set(xcb_window_t window, Client& client, std::optional<bool> isToBeCovered) {
    client.isToBeCovered = isToBeCovered;
    if (client.isCovered()) {
        protect(window, client);
    } else {
        uncover(window);
        uncover(client.frame);
    }
}

void X11Covers::protect(xcb_window_t window, Client& client) {
    if (!isManagerTried_) {
        return;
    }
    coverInside(window);
    connection_->flush();
    if (!client.isPopup) {
        findFrame(window, client);
    }
}

void X11Covers::findFrame(xcb_window_t window, Client& client) {
    auto outermost = window;
    while (true) {
        const auto tree =
            connection_->reply<xcb_query_tree_reply>(xcb_query_tree(connection_->get(), outermost));
        if (!tree || tree->parent == XCB_WINDOW_NONE) {
            return;
        }
        if (tree->parent == connection_->root()) {
            break;
        }
        outermost = tree->parent;
        if (connectionOf(outermost) != managerConnection_) {
            // It stands in another program's window, whose frame is not its own.
            return;
        }
    }
    if (outermost != window) {
        client.frame = outermost;
        coverInside(outermost);
    }
}

void X11Covers::coverInside(xcb_window_t parent) {
    if (covers_.contains(parent)) {
        return;
    }
    auto* const xcb = connection_->get();
    const auto cover = xcb_generate_id(xcb);
    covers_.emplace(parent, cover);
    choose(parent, clients_.contains(parent) ? clientEvents | parentEvents : parentEvents);
    // Nobody is to click or point at what cannot be seen.
    const std::array<std::uint32_t, 3> values{coverColour, 1U,
                                              XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                                  XCB_EVENT_MASK_POINTER_MOTION};
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, cover, parent, 0, 0, coverSize, coverSize, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_DONT_PROPAGATE, values.data());
    xcb_map_window(xcb, cover);
}

void X11Covers::uncover(xcb_window_t parent) {
    if (const auto cover = covers_.extract(parent); !cover.empty()) {
        xcb_destroy_window(connection_->get(), cover.mapped());
        choose(parent, clients_.contains(parent) ? clientEvents : std::uint32_t{0});
        toRaiseIn_.erase(parent);
    }
}

void X11Covers::uncoverAll() {
    while (!covers_.empty()) {
        uncover(covers_.begin()->first);
    }
    connection_->flush();
}

bool X11Covers::areAllCoveredOf(xcb_window_t connection) const {
    bool isAny = false;
    for (auto entry = clients_.lower_bound(connection);
         entry != clients_.end() && connectionOf(entry->first) == connection; ++entry) {
        const auto& client = entry->second;
        if (!client.isPopup && client.isToBeCovered == false) {
            return false;
        }
        isAny = isAny || (!client.isPopup && client.isCovered());
    }
    return isAny;
}

void X11Covers::choose(xcb_window_t window, std::uint32_t events) {
    xcb_change_window_attributes(connection_->get(), window, XCB_CW_EVENT_MASK, &events);
}

} // namespace LinuxPlatform
