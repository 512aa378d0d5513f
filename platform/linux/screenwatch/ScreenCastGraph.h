#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace LinuxPlatform {

/// The streams of a media server as far as screen casts show in them, and the rule that tells them from
/// cameras: a cast is a running video source that is no device and no camera, that some program other than
/// the desktop itself receives, and that either belongs to a program that casts screens or was handed out by
/// the desktop's portal.
class ScreenCastGraph {
public:
    using Id = std::uint32_t;

    struct Node {
        /// As in the properties "media.class", "node.name" and "media.role".
        std::string mediaClass;
        std::string name;
        std::string role;
        /// The program that it belongs to.
        Id client = 0;
        bool isDevice = false;
        bool isRunning = false;

        /// Whether it may send pictures at all.
        bool isVideoSource() const;
    };

    struct Client {
        /// As in "application.name" and "application.process.binary".
        std::string application;
        std::string binary;
        /// As in "pipewire.access" and "pipewire.access.portal.media_roles".
        std::string access;
        std::string portalRoles;
    };

    struct Link {
        Id outputNode = 0;
        Id inputNode = 0;
    };

    std::map<Id, Node> nodes;
    std::map<Id, Client> clients;
    std::map<Id, Link> links;

    void remove(Id id);
    void clear();
    bool isScreenCast() const;

private:
    bool isReceivedCast(Id id, const Node& node) const;
    bool belongsToACaster(const Node& node) const;
    bool isFromPortal(Id receiver) const;
    /// Whether the desktop receives its own picture, as for the previews of its task bar.
    bool isDesktopsOwn(Id receiver, const Node& node) const;
    const Client* clientOf(Id node) const;
};

} // namespace LinuxPlatform
