#include "platform/linux/screenwatch/ScreenCastGraph.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace LinuxPlatform {
namespace {

/// Compositors and the portals that cast for them, by the beginning of their names.
constexpr std::array<std::string_view, 13> casters{
    "xdg-desktop-portal", "gnome-shell", "mutter", "kwin_wayland", "kwin_x11", "gamescope", "sway", "niri",
    "cosmic-comp",        "wayfire",     "labwc",  "weston",       "hyprland"};

/// The desktops that draw their own pictures from casts.
constexpr std::array<std::string_view, 3> shells{"plasmashell", "kwin_wayland", "kwin_x11"};

bool isCaster(std::string_view name) {
    return std::ranges::any_of(casters, [&](auto caster) { return name.starts_with(caster); });
}

} // namespace

bool ScreenCastGraph::Node::isVideoSource() const {
    return mediaClass == "Video/Source" || mediaClass == "Stream/Output/Video";
}

void ScreenCastGraph::remove(Id id) {
    nodes.erase(id);
    clients.erase(id);
    links.erase(id);
}

void ScreenCastGraph::clear() {
    nodes.clear();
    clients.clear();
    links.clear();
}

bool ScreenCastGraph::isScreenCast() const {
    return std::ranges::any_of(nodes, [&](const auto& entry) {
        const auto& [id, node] = entry;
        return node.isVideoSource() && !node.isDevice && node.role != "Camera" && node.isRunning &&
               isReceivedCast(id, node);
    });
}

bool ScreenCastGraph::isReceivedCast(Id id, const Node& node) const {
    return std::ranges::any_of(links, [&](const auto& entry) {
        const auto& link = entry.second;
        return link.outputNode == id && !isDesktopsOwn(link.inputNode, node) &&
               (belongsToACaster(node) || isFromPortal(link.inputNode));
    });
}

bool ScreenCastGraph::belongsToACaster(const Node& node) const {
    const auto client = clients.find(node.client);
    return isCaster(node.name) || (client != clients.end() &&
                                   (isCaster(client->second.application) || isCaster(client->second.binary)));
}

bool ScreenCastGraph::isFromPortal(Id receiver) const {
    const auto* const client = clientOf(receiver);
    return client != nullptr && client->access == "portal" &&
           client->portalRoles.find("Camera") == std::string::npos;
}

bool ScreenCastGraph::isDesktopsOwn(Id receiver, const Node& node) const {
    const auto* const client = clientOf(receiver);
    // Programs choose their names; what came through the portal is not the desktop.
    if (client == nullptr || client->access == "portal") {
        return false;
    }
    return nodes.at(receiver).client == node.client || std::ranges::count(shells, client->binary) > 0;
}

const ScreenCastGraph::Client* ScreenCastGraph::clientOf(Id node) const {
    const auto found = nodes.find(node);
    const auto client = found != nodes.end() ? clients.find(found->second.client) : clients.end();
    return client != clients.end() ? &client->second : nullptr;
}

} // namespace LinuxPlatform
