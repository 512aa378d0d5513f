#include "platform/linux/session/NameOwner.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace LinuxPlatform {
namespace {

/// Stands on the bus for whoever is in a sandbox.
constexpr std::string_view sandboxProxy = "xdg-dbus-proxy";

/// ":0.1" is a screen of ":0".
std::string withoutScreen(const std::string& display) {
    const auto colon = display.rfind(':');
    return colon == std::string::npos ? display : display.substr(0, display.find('.', colon));
}

bool differ(const std::string& one, const std::string& other) {
    return !one.empty() && !other.empty() && one != other;
}

bool isOfSession(const ProcessTable& processes, std::uint32_t process, const SessionEnvironment& session) {
    const std::filesystem::path socket =
        processes.environmentVariable(process, "WAYLAND_DISPLAY").value_or("");
    const auto display = processes.environmentVariable(process, "DISPLAY").value_or("");
    return !differ(socket.filename(), session.waylandSocket.filename()) &&
           !differ(withoutScreen(display), withoutScreen(session.display));
}

} // namespace

NameOwner judgeNameOwner(const ProcessTable& processes, std::uint32_t owner, std::uint32_t thisProcess,
                         const SessionEnvironment& session) {
    const auto program = processes.program(owner);
    if (program == sandboxProxy) {
        return NameOwner::thisSessions;
    }
    if (program && program != processes.program(thisProcess)) {
        return NameOwner::stranger;
    }
    return isOfSession(processes, owner, session) ? NameOwner::thisSessions : NameOwner::anotherSessions;
}

} // namespace LinuxPlatform
