#include "platform/linux/windows/x11/X11WindowProperties.h"

#include "platform/linux/windows/x11/X11WindowAtoms.h"
#include "platform/linux/windows/x11/X11WindowText.h"
#include "platform/linux/x11/X11Property.h"

#include <algorithm>
#include <array>
#include <optional>
#include <variant>

namespace LinuxPlatform {
namespace {

using Reply = xcb_get_property_reply_t;
using enum X11WindowAtom;

/// In the first of the Motif hints: the second is set.
constexpr std::uint32_t motifHasFunctions = 1U << 0U;

std::optional<std::uint32_t> numberIn(const Reply& reply) {
    const auto numbers = numbersIn(&reply);
    return numbers.empty() ? std::nullopt : std::optional(numbers.front());
}

void readMotifHints(X11Window& window, const Reply& reply) {
    const auto hints = listIn(reply);
    const bool hasFunctions = hints.size() > 1 && (hints[0] & motifHasFunctions) != 0;
    window.wantedFunctions = hasFunctions ? std::optional(hints[1]) : std::nullopt;
}

void readAllowedActions(X11Window& window, const Reply& reply) {
    window.allowedActions = reply.type != XCB_ATOM_NONE ? std::optional(listIn(reply)) : std::nullopt;
}

struct Property {
    /// One of ours, or one that every server has.
    std::variant<X11WindowAtom, xcb_atom_t> name;
    /// In units of four bytes: what is longer is cut.
    std::uint32_t longestValue;
    void (*read)(X11Window& window, const Reply& reply);
};

constexpr std::array<Property, 12> properties{{
    {xcb_atom_t{XCB_ATOM_WM_CLASS}, 256,
     [](X11Window& window, const Reply& reply) { readClassInto(window, &reply); }},
    {xcb_atom_t{XCB_ATOM_WM_CLIENT_MACHINE}, 64,
     [](X11Window& window, const Reply& reply) { window.clientMachine = textIn(bytesIn(&reply)); }},
    {netWmState, 64, [](X11Window& window, const Reply& reply) { window.state = listIn(reply); }},
    {wmState, 1, [](X11Window& window, const Reply& reply) { window.managerState = numberIn(reply); }},
    {netWmPid, 1, [](X11Window& window, const Reply& reply) { window.declaredProcess = numberIn(reply); }},
    {netWmWindowType, 64, [](X11Window& window, const Reply& reply) { window.type = listIn(reply); }},
    {netWmDesktop, 1, [](X11Window& window, const Reply& reply) { window.desktop = numberIn(reply); }},
    {kdeNetWmDesktopFile, 256,
     [](X11Window& window, const Reply& reply) { window.desktopFile = textIn(bytesIn(&reply)); }},
    {gtkApplicationId, 256,
     [](X11Window& window, const Reply& reply) { window.applicationId = textIn(bytesIn(&reply)); }},
    {xcb_atom_t{XCB_ATOM_WM_TRANSIENT_FOR}, 1,
     [](X11Window& window, const Reply& reply) { window.isTransient = numberIn(reply).value_or(0) != 0; }},
    {motifWmHints, 5, readMotifHints},
    {netWmAllowedActions, 64, readAllowedActions},
}};

} // namespace

X11WindowProperties::X11WindowProperties(X11Connection& connection, std::span<const xcb_atom_t> atoms)
    : connection_(connection) {
    for (const auto& property : properties) {
        const auto* const own = std::get_if<X11WindowAtom>(&property.name);
        atoms_.push_back(own != nullptr ? atoms[static_cast<std::size_t>(*own)]
                                        : std::get<xcb_atom_t>(property.name));
    }
}

X11WindowProperties::Set X11WindowProperties::setOf(xcb_atom_t property) const {
    const auto found = std::ranges::find(atoms_, property);
    return found == atoms_.end() ? 0 : 1U << static_cast<unsigned>(found - atoms_.begin());
}

std::vector<X11WindowProperties::Request> X11WindowProperties::ask(xcb_window_t window, Set wanted) const {
    std::vector<Request> requests;
    for (std::size_t index = 0; index < properties.size(); ++index) {
        if ((wanted >> index & 1U) != 0) {
            requests.push_back(
                {index, xcb_get_property(connection_.get(), 0, window, atoms_[index],
                                         XCB_GET_PROPERTY_TYPE_ANY, 0, properties.at(index).longestValue)});
        }
    }
    return requests;
}

bool X11WindowProperties::receive(std::span<const Request> requests, X11Window& window) const {
    bool isThere = false;
    for (const auto& request : requests) {
        if (const auto reply = connection_.reply<xcb_get_property_reply>(request.cookie)) {
            isThere = true;
            properties.at(request.property).read(window, *reply);
        }
    }
    return isThere;
}

} // namespace LinuxPlatform
