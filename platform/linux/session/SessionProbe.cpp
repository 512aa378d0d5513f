#include "platform/linux/session/SessionProbe.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string_view>

#include <unistd.h>

namespace LinuxPlatform {
namespace {

/// What libraries take where no variable names the compositor's socket.
constexpr auto usualWaylandSocket = "wayland-0";

constexpr auto sway = "sway";
constexpr auto i3 = "i3";

/// Compositors that say on the session bus who they are.
struct KnownCompositor {
    std::string_view busName;
    std::string_view program;
    std::string_view name;
};

constexpr std::array<KnownCompositor, 2> knownCompositors{{
    {"org.gnome.Shell", "gnome-shell", "GNOME Shell"},
    {"org.kde.KWin", "kwin_wayland", "KWin"},
}};

std::vector<std::string> splitAtColons(const std::string& text) {
    std::vector<std::string> names;
    std::istringstream list(text);
    for (std::string name; std::getline(list, name, ':');) {
        if (!name.empty()) {
            names.push_back(name);
        }
    }
    return names;
}

/// The questions that follow from earlier answers.
class Probe {
public:
    explicit Probe(const SessionSources& sources) : sources_(sources) {}

    SessionEnvironment run() {
        result_.desktops = splitAtColons(sources_.variable("XDG_CURRENT_DESKTOP"));
        askXServer();
        askCompositor();
        result_.kind = kind();
        if (!result_.isWayland()) {
            result_.waylandSocket.clear();
            compositor_.reset();
        }
        askI3();
        result_.windowManager = windowManager();
        return result_;
    }

private:
    void askXServer() {
        const auto display = sources_.variable("DISPLAY");
        if (!display.empty()) {
            xServer_ = sources_.askXServer(display);
            (xServer_ ? result_.display : result_.silentDisplay) = display;
        }
    }

    bool isGuestServer() const { return xServer_ && xServer_->isXWayland.value_or(false); }

    void askCompositor() {
        auto name = sources_.variable("WAYLAND_DISPLAY");
        if (name.empty() && isGuestServer()) {
            name = usualWaylandSocket;
        }
        const auto socket = std::filesystem::path(sources_.variable("XDG_RUNTIME_DIR")) / name;
        if (name.empty() || !socket.is_absolute()) {
            return;
        }
        compositor_ = sources_.askCompositor(socket);
        result_.waylandSocket = compositor_ ? socket : std::filesystem::path();
    }

    SessionKind kind() const {
        if (!xServer_) {
            return compositor_ ? SessionKind::wayland : SessionKind::none;
        }
        const bool isSaidToBeWayland = compositor_ && sources_.variable("XDG_SESSION_TYPE") == "wayland";
        return xServer_->isXWayland.value_or(isSaidToBeWayland) ? SessionKind::waylandWithX
                                                                : SessionKind::x11;
    }

    std::optional<std::uint32_t> compositorProcess() const {
        return compositor_ ? compositor_->process : std::nullopt;
    }

    void askI3() {
        for (const auto& socket : result_.isWayland() ? swaySockets() : i3Sockets()) {
            const auto answer = socket.is_absolute() ? sources_.askI3(socket) : std::nullopt;
            if (answer && isOfThisSession(*answer)) {
                result_.i3Socket = socket;
                return;
            }
        }
    }

    std::vector<std::filesystem::path> swaySockets() const {
        std::vector<std::filesystem::path> sockets;
        if (const auto process = compositorProcess()) {
            sockets.push_back(
                std::filesystem::path(sources_.variable("XDG_RUNTIME_DIR")) /
                ("sway-ipc." + std::to_string(geteuid()) + "." + std::to_string(*process) + ".sock"));
        }
        sockets.emplace_back(sources_.variable("SWAYSOCK"));
        return sockets;
    }

    std::vector<std::filesystem::path> i3Sockets() const {
        std::vector<std::filesystem::path> sockets;
        if (result_.kind == SessionKind::x11) {
            sockets.push_back(xServer_->i3Socket);
            sockets.emplace_back(sources_.variable("I3SOCK"));
        }
        return sockets;
    }

    /// The variables may have come from another session, of the same user or around this one.
    bool isOfThisSession(const I3Answer& answer) const {
        if (result_.isWayland()) {
            const auto process = compositorProcess();
            return answer.name == sway && (!process || !answer.process || process == answer.process);
        }
        return answer.name == i3 && xServer_->windowManager.value_or(i3) == i3;
    }

    std::optional<std::string> windowManager() const {
        if (!result_.i3Socket.empty()) {
            return result_.isWayland() ? sway : i3;
        }
        const auto name = result_.isWayland() ? compositorName() : std::nullopt;
        return name || !xServer_ ? name : xServer_->windowManager;
    }

    std::optional<std::string> compositorName() const {
        const auto process = compositorProcess();
        const auto program = process ? sources_.programName(*process) : std::string();
        // Several sessions of a user may share one bus.
        const auto owners = sources_.busOwners(busNames());
        const auto isThis = [&](const KnownCompositor& known) {
            const auto owner = owners.find(std::string(known.busName));
            // A helper's name begins like the compositor's.
            return program.starts_with(known.program) ||
                   (owner != owners.end() && (!process || process == owner->second));
        };
        const auto* const known = std::ranges::find_if(knownCompositors, isThis);
        if (known != knownCompositors.end()) {
            return std::string(known->name);
        }
        return program.empty() ? std::nullopt : std::optional(program);
    }

    static std::vector<std::string> busNames() {
        std::vector<std::string> names;
        for (const auto& known : knownCompositors) {
            names.emplace_back(known.busName);
        }
        return names;
    }

    const SessionSources& sources_;
    SessionEnvironment result_;
    std::optional<XServerAnswer> xServer_;
    std::optional<CompositorAnswer> compositor_;
};

} // namespace

SessionEnvironment probeSession(const SessionSources& sources) {
    return Probe(sources).run();
}

} // namespace LinuxPlatform
