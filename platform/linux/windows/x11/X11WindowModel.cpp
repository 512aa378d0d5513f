#include "platform/linux/windows/x11/X11WindowModel.h"

#include "platform/linux/windows/x11/X11Frames.h"
#include "platform/linux/windows/x11/X11WindowAtoms.h"
#include "platform/linux/x11/X11ClientProcess.h"
#include "platform/linux/x11/X11Property.h"

#include <algorithm>
#include <array>
#include <set>
#include <tuple>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t longestList = 1U << 16U;
constexpr std::uint32_t iconicState = 3;
/// In the second of the Motif hints: all functions but the named ones.
constexpr std::uint32_t motifAllBut = 1U << 0U;
constexpr std::uint32_t motifMinimize = 1U << 3U;

/// And after the extension that tells of processes, in the same round trip.
std::vector<xcb_atom_t> askAtoms(X11Connection& connection) {
    xcb_prefetch_extension_data(connection.get(), &xcb_res_id);
    return connection.atoms(x11WindowAtomNames);
}

} // namespace

/// The replies about one window that are on their way.
class X11WindowModel::Reading {
public:
    Reading(X11WindowModel& model, xcb_window_t window, const Entry& entry) : model_(model), window_(window) {
        auto* const connection = model.connection_.get();
        if (entry.isNew) {
            const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
            xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
        }
        requests_ =
            model.properties_.ask(window, entry.isNew ? X11WindowProperties::all : entry.staleProperties);
        if (entry.isNew || entry.isViewableStale || entry.isFrameStale) {
            attributesRequest_ = xcb_get_window_attributes(connection, window);
        }
        if (entry.isNew && model.hasProcessQuery_) {
            processRequest_ = askClientProcess(model.connection_, window);
        }
    }

    xcb_window_t window() const { return window_; }

    /// False when the window is gone.
    bool finish(Entry& entry) {
        auto& window = entry.window;
        bool isThere = model_.properties_.receive(requests_, window);
        if (attributesRequest_) {
            const auto reply = model_.connection_.reply<xcb_get_window_attributes_reply>(*attributesRequest_);
            isThere = isThere || reply;
            entry.isViewable = reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
        }
        if (processRequest_) {
            window.connectedProcess = receiveClientProcess(model_.connection_, *processRequest_);
        }
        return isThere;
    }

private:
    X11WindowModel& model_;
    xcb_window_t window_;
    std::vector<X11WindowProperties::Request> requests_;
    std::optional<xcb_get_window_attributes_cookie_t> attributesRequest_;
    std::optional<xcb_res_query_client_ids_cookie_t> processRequest_;
};

X11WindowModel::X11WindowModel(X11Connection& connection, std::function<void()> onChanged)
    : connection_(connection),
      onChanged_(std::move(onChanged)),
      atoms_(askAtoms(connection)),
      properties_(connection, atoms_) {
    // Servers whose extension is too old for the question answer it with an error.
    const auto* const resourceExtension = xcb_get_extension_data(connection.get(), &xcb_res_id);
    hasProcessQuery_ = resourceExtension != nullptr && resourceExtension->present != 0;
    eventHandler_ = connection.addEventHandler([this](const auto& event) { handleEvent(event); });
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection.get(), connection.root(), XCB_CW_EVENT_MASK, &mask);
}

X11WindowModel::Changes X11WindowModel::update() {
    Changes changes;
    readRoot(changes);
    if (areWindowsStale_) {
        readStaleWindows(changes);
    }
    std::erase_if(changes.opened, [this](auto window) { return find(window) == nullptr; });
    changes.closed = std::exchange(closed_, {});
    return std::exchange(isFirstUpdate_, false) ? Changes{} : changes;
}

const X11Window* X11WindowModel::find(xcb_window_t window) const {
    const auto found = entries_.find(window);
    return found == entries_.end() ? nullptr : &found->second.window;
}

void X11WindowModel::expectHidden(xcb_window_t window, std::uint64_t request) {
    if (const auto entry = entries_.find(window); entry != entries_.end()) {
        entry->second.isExpectedHidden = true;
        entry->second.hideRequest = request;
        entry->second.wasUnmapped = false;
        entry->second.wasMapped = false;
        // The first is that the window manager takes the window in, which it may have listed before.
        entry->second.managerStateWrites = entry->second.window.managerState ? 0 : -1;
    }
}

void X11WindowModel::expectNoMore(xcb_window_t window, std::uint64_t request) {
    const auto entry = entries_.find(window);
    if (entry != entries_.end() && entry->second.hideRequest == request) {
        entry->second.isExpectedHidden = false;
    }
}

bool X11WindowModel::isExpectedHidden(xcb_window_t window) const {
    const auto entry = entries_.find(window);
    return entry != entries_.end() && entry->second.isExpectedHidden;
}

std::vector<xcb_window_t> X11WindowModel::stackingOrder() {
    return stackingOrderOf(connection_, clientList_);
}

std::optional<std::uint32_t> X11WindowModel::currentDesktop() {
    const auto list = receiveNumbers(requestNumbers(connection_.root(), netCurrentDesktop));
    return list.empty() ? std::nullopt : std::optional(list.front());
}

void X11WindowModel::handleEvent(const xcb_generic_event_t& event) {
    // Those with the highest bit come from clients, which may say anything; the server's own never fail to
    // come.
    switch (event.response_type) {
    case XCB_PROPERTY_NOTIFY: {
        const auto& notification = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notification.window == connection_.root() || notification.window == managerWindow_) {
            sessionPropertyChanged(notification);
        } else {
            windowPropertyChanged(notification.window, notification.atom);
        }
        break;
    }
    case XCB_MAP_NOTIFY:
        windowMapped(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
        break;
    case XCB_UNMAP_NOTIFY:
        windowUnmapped(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
        break;
    case XCB_DESTROY_NOTIFY:
        windowDestroyed(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
        break;
    default:
        break;
    }
}

void X11WindowModel::sessionPropertyChanged(const xcb_property_notify_event_t& notification) {
    const auto property = notification.atom;
    isNextManagerThere_ = isNextManagerThere_ || (notification.window == connection_.root() &&
                                                  property == atom(netSupportingWmCheck) &&
                                                  notification.state == XCB_PROPERTY_NEW_VALUE);
    isClientListOld_ = isClientListOld_ && property != atom(netClientList);
    const std::array<std::pair<Atom, bool*>, 4> watched{{{netSupportingWmCheck, &isManagerStale_},
                                                         {netSupported, &isManagerStale_},
                                                         {netClientList, &isClientListStale_},
                                                         {netActiveWindow, &isActiveWindowStale_}}};
    for (const auto& [name, isStale] : watched) {
        if (atom(name) == property) {
            *isStale = true;
            onChanged_();
        }
    }
}

void X11WindowModel::windowPropertyChanged(xcb_window_t window, xcb_atom_t property) {
    const auto found = entries_.find(window);
    const auto bit = properties_.setOf(property);
    if (found == entries_.end() || bit == 0) {
        return;
    }
    auto& entry = found->second;
    const bool isManagerState = property == atom(wmState);
    entry.managerStateWrites += isManagerState ? 1 : 0;
    if (isManagerState && entry.window.managerState && !entry.isHiddenMarkInDoubt &&
        !entry.window.isHiddenMarkStale && !entry.isExpectedHidden) {
        // Every hiding and showing changes it, and nobody asks.
        return;
    }
    entry.staleProperties |= bit;
    entry.isHiddenMarkInDoubt = entry.isHiddenMarkInDoubt && property != atom(netWmState);
    windowsChanged();
}

void X11WindowModel::windowMapped(xcb_window_t window) {
    const auto found = entries_.find(window);
    if (found == entries_.end()) {
        frameChanged(window);
        return;
    }
    auto& entry = found->second;
    if (entry.isExpectedHidden && entry.wasUnmapped) {
        entry.wasMapped = true;
        entry.staleProperties |= properties_.setOf(atom(netWmState));
        windowsChanged();
    }
    if (isMarkedHidden(entry.window) || (entry.staleProperties & properties_.setOf(atom(netWmState))) != 0) {
        entry.isHiddenMarkInDoubt = true;
        entry.isViewableStale = true;
        entry.staleProperties |= properties_.setOf(atom(wmState));
        windowsChanged();
    }
}

void X11WindowModel::windowUnmapped(xcb_window_t window) {
    const auto found = entries_.find(window);
    if (found == entries_.end()) {
        frameChanged(window);
        return;
    }
    auto& entry = found->second;
    entry.wasUnmapped = true;
    entry.isUnmappedToHide = true;
    entry.isHiddenMarkInDoubt = false;
    entry.isViewableStale = false;
    entry.isViewable = false;
    if (std::exchange(entry.window.isHiddenMarkStale, false)) {
        ++generation_;
        onChanged_();
    }
}

void X11WindowModel::frameChanged(xcb_window_t window) {
    if (auto* const entry = entryWithFrame(window)) {
        entry->isFrameStale = true;
        windowsChanged();
    }
}

X11WindowModel::Entry* X11WindowModel::entryWithFrame(xcb_window_t frame) {
    const auto found =
        std::ranges::find_if(entries_, [&](const auto& entry) { return entry.second.frame == frame; });
    return found == entries_.end() ? nullptr : &found->second;
}

void X11WindowModel::windowsChanged() {
    areWindowsStale_ = true;
    onChanged_();
}

void X11WindowModel::windowDestroyed(xcb_window_t window) {
    if (window == managerWindow_) {
        isManagerStale_ = true;
        // The next one may have written its own before this one is gone.
        isClientListOld_ = isClientListOld_ || !isNextManagerThere_;
        ++managerGeneration_;
        onChanged_();
    } else if (entries_.erase(window) > 0) {
        std::erase(clientList_, window);
        closed_.push_back(window);
        ++generation_;
        onChanged_();
    }
}

void X11WindowModel::readRoot(Changes& changes) {
    const auto request = [this](bool isStale, Atom name) {
        return isStale ? std::optional(requestNumbers(connection_.root(), name)) : std::nullopt;
    };
    const auto supported = request(isManagerStale_, netSupported);
    const auto manager = request(std::exchange(isManagerStale_, false), netSupportingWmCheck);
    // The list of a window manager that is gone says nothing.
    const auto clientList = request(std::exchange(isClientListStale_, false) || manager, netClientList);
    const auto active = request(std::exchange(isActiveWindowStale_, false), netActiveWindow);
    if (manager) {
        isNextManagerThere_ = false;
        const auto answer = receiveNumbers(*manager);
        const auto window = answer.empty() ? xcb_window_t{XCB_WINDOW_NONE} : answer.front();
        if (std::exchange(managerWindow_, window) != window) {
            ++managerGeneration_;
        }
        isManagerGone_ = managerWindow_ != XCB_WINDOW_NONE && !isManagerAlive();
    }
    if (supported) {
        const auto hints = receiveNumbers(*supported);
        const auto has = [&](Atom hint) { return std::ranges::find(hints, atom(hint)) != hints.end(); };
        isClientListSupported_ = has(netClientList);
        isMinimizeActionSupported_ = has(netWmActionMinimize);
        isRestackingSupported_ = has(netRestackWindow);
        isFrameQuestionSupported_ = has(netRequestFrameExtents);
    }
    if (clientList) {
        const auto reply = connection_.reply<xcb_get_property_reply>(*clientList);
        isClientListThere_ = reply && reply->type != XCB_ATOM_NONE;
        auto list = reply ? listIn(*reply) : std::vector<std::uint32_t>{};
        takeClientList(isManagerGone_ ? std::vector<xcb_window_t>{} : std::move(list), changes);
    }
    if (active) {
        const auto answer = receiveNumbers(*active);
        const auto window = answer.empty() ? xcb_window_t{XCB_WINDOW_NONE} : answer.front();
        const auto entry = entries_.find(window);
        const auto birth = entry == entries_.end() ? 0 : entry->second.window.birth;
        // Some window managers leave the window there that had the focus last, also when it is gone. The next
        // one may have its identifier.
        const bool isOther = std::exchange(activeWindow_, window) != window;
        const bool isReborn = std::exchange(activeWindowBirth_, birth) != birth;
        if ((isOther || isReborn) && window != XCB_WINDOW_NONE) {
            changes.activated = window;
        }
    }
}

bool X11WindowModel::isManagerAlive() {
    // It may be there before it names itself.
    const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), managerWindow_, XCB_CW_EVENT_MASK, &mask);
    // The window names itself; one that only has the same identifier does not.
    return receiveNumbers(requestNumbers(managerWindow_, netSupportingWmCheck)) ==
           std::vector{managerWindow_};
}

void X11WindowModel::takeClientList(std::vector<xcb_window_t> list, Changes& changes) {
    clientList_ = std::move(list);
    ++generation_;
    const std::set<xcb_window_t> listed(clientList_.begin(), clientList_.end());
    for (auto& [window, entry] : entries_) {
        entry.window.isManaged = entry.window.isManaged && listed.contains(window);
    }
    for (const auto window : clientList_) {
        auto& entry = entries_[window];
        if (std::exchange(entry.window.id, window) != window) {
            entry.window.birth = ++lastBirth_;
        }
        if (!std::exchange(entry.window.isManaged, true)) {
            changes.opened.push_back(window);
        }
        areWindowsStale_ = areWindowsStale_ || entry.isNew;
    }
}

void X11WindowModel::readStaleWindows(Changes& changes) {
    areWindowsStale_ = false;
    std::vector<Reading> readings;
    for (const auto& [window, entry] : entries_) {
        if (entry.isStale()) {
            readings.emplace_back(*this, window, entry);
        }
    }
    for (auto& reading : readings) {
        auto& entry = entries_.at(reading.window());
        const auto before = entry.window;
        if (!reading.finish(entry)) {
            std::erase(clientList_, reading.window());
            closed_.push_back(reading.window());
            entries_.erase(reading.window());
            continue;
        }
        entry.isHiddenMarkInDoubt = entry.isHiddenMarkInDoubt || isFirstUpdate_;
        entry.window.isHiddenMarkStale = isHiddenMarkStale(entry);
        entry.window.isRolledUp = isRolledUp(entry);
        const bool isBack = isBackUnseen(entry, before);
        if (isBack) {
            changes.returned.push_back(entry.window.id);
        }
        entry.isExpectedHidden = entry.isExpectedHidden && !isBack && !isHidden(entry.window);
        entry.staleProperties = 0;
        entry.isViewableStale = false;
        entry.isFrameStale = false;
        if (!std::exchange(entry.isNew, false)) {
            compare(before, entry.window, changes);
        }
    }
    ++generation_;
}

void X11WindowModel::compare(const X11Window& before, const X11Window& now, Changes& changes) const {
    const auto identity = [](const X11Window& window) {
        return std::tie(window.instanceName, window.className, window.desktopFile, window.applicationId,
                        window.declaredProcess);
    };
    // A new window can have the identifier of one that is gone but still in the list: its own time comes when
    // it is taken in.
    const bool isTakenIn = !before.managerState && now.managerState;
    if (now.isManaged && (isTakenIn || identity(before) != identity(now))) {
        changes.identified.push_back(now.id);
    }
    if (now.isManaged && isHidden(before) && !isHidden(now)) {
        changes.returned.push_back(now.id);
    }
}

bool X11WindowModel::hasState(const X11Window& window, Atom state) const {
    return std::ranges::find(window.state, atom(state)) != window.state.end();
}

bool X11WindowModel::isOfType(const X11Window& window, Atom type) const {
    return std::ranges::find(window.type, atom(type)) != window.type.end();
}

bool X11WindowModel::isAppWindow(const X11Window& window) const {
    return window.isManaged && !isOfType(window, netWmWindowTypeDesktop) &&
           !isOfType(window, netWmWindowTypeDock);
}

bool X11WindowModel::isOnDesktop(const X11Window& window, std::optional<std::uint32_t> desktop) const {
    const auto own = desktopOf(window);
    return !desktop || !own || own == desktop || own == onAllDesktops;
}

bool X11WindowModel::mayBeMinimized(const X11Window& window) const {
    if (window.wantedFunctions &&
        ((*window.wantedFunctions & motifAllBut) != 0) == ((*window.wantedFunctions & motifMinimize) != 0)) {
        return false;
    }
    // What is missing says nothing where the window manager does not know the action.
    return !isMinimizeActionSupported_ || !window.allowedActions ||
           std::ranges::find(*window.allowedActions, atom(netWmActionMinimize)) !=
               window.allowedActions->end();
}

bool X11WindowModel::isMarkedHidden(const X11Window& window) const {
    return hasState(window, netWmStateHidden);
}

bool X11WindowModel::isBackUnseen(const Entry& entry, const X11Window& before) const {
    const bool isThere = entry.window.isManaged && !isHidden(before) && !isHidden(entry.window);
    if (!entry.isExpectedHidden || !isThere) {
        return false;
    }
    // There and back again. Some window managers refuse the request by writing once that the window is
    // normal.
    const bool wasIconic =
        !entry.isUnmappedToHide && entry.managerStateWrites > 1 && entry.window.managerState != iconicState;
    if (entry.wasMapped || wasIconic) {
        return true;
    }
    // The focus leaves a window, or comes upon it, while it is being hidden.
    return !isOnlyTheFocusDifferent(before, entry.window);
}

bool X11WindowModel::isOnlyTheFocusDifferent(const X11Window& before, const X11Window& now) const {
    const auto withoutFocus = [this](std::vector<xcb_atom_t> state) {
        std::erase(state, atom(netWmStateFocused));
        // Neither time it says so truly, or the window would be hidden.
        std::erase(state, atom(netWmStateHidden));
        std::ranges::sort(state);
        return state;
    };
    return withoutFocus(before.state) == withoutFocus(now.state);
}

bool X11WindowModel::isRolledUp(Entry& entry) {
    entry.frame = XCB_WINDOW_NONE;
    if (!isMarkedHidden(entry.window) || !hasState(entry.window, netWmStateShaded)) {
        return false;
    }
    entry.frame = outermostWindow(connection_, entry.window.id);
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (entry.frame != entry.window.id) {
        xcb_change_window_attributes(connection_.get(), entry.frame, XCB_CW_EVENT_MASK, &mask);
    }
    const auto attributes = connection_.reply<xcb_get_window_attributes_reply>(
        xcb_get_window_attributes(connection_.get(), entry.frame));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool X11WindowModel::isHiddenMarkStale(const Entry& entry) const {
    const bool isShown = entry.isViewable && entry.window.managerState != iconicState;
    return isMarkedHidden(entry.window) && isShown &&
           (entry.isHiddenMarkInDoubt || entry.window.isHiddenMarkStale);
}

xcb_get_property_cookie_t X11WindowModel::requestNumbers(xcb_window_t window, Atom name) {
    return xcb_get_property(connection_.get(), 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0,
                            longestList);
}

std::vector<std::uint32_t> X11WindowModel::receiveNumbers(xcb_get_property_cookie_t request) {
    const auto reply = connection_.reply<xcb_get_property_reply>(request);
    return reply ? listIn(*reply) : std::vector<std::uint32_t>{};
}

} // namespace LinuxPlatform
