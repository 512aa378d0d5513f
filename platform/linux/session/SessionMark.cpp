#include "platform/linux/session/SessionMark.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>

namespace LinuxPlatform {
namespace {

/// Where the session's display server listens; empty when it is on another machine.
std::filesystem::path serverSocket(const SessionEnvironment& environment) {
    if (!environment.waylandSocket.empty()) {
        return environment.waylandSocket;
    }
    const auto& display = environment.display;
    if (!display.starts_with(':')) {
        return {};
    }
    return std::filesystem::path(P_tmpdir) / ".X11-unix" / ("X" + display.substr(1, display.find('.') - 1));
}

/// Every server makes its socket anew.
std::string birth(const std::filesystem::path& socket) {
    struct stat status {};
    if (::stat(socket.c_str(), &status) != 0) {
        return {};
    }
    return std::to_string(status.st_ino) + "," + std::to_string(status.st_mtim.tv_sec) + "," +
           std::to_string(status.st_mtim.tv_nsec);
}

} // namespace

std::string sessionMark(const SessionEnvironment& environment) {
    std::string boot;
    std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), boot);
    const auto socket = serverSocket(environment);
    return boot + " " + socket.string() + " " + birth(socket);
}

} // namespace LinuxPlatform
