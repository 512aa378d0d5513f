#include "platform/linux/desktopicons/EarlierValue.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include <sys/stat.h>

namespace LinuxPlatform {
namespace {

std::string environmentValue(const char* name) {
    const auto* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Where the session's display server listens; empty when it is on another machine.
std::filesystem::path serverSocket() {
    if (const auto wayland = environmentValue("WAYLAND_DISPLAY"); !wayland.empty()) {
        return std::filesystem::path(environmentValue("XDG_RUNTIME_DIR")) / wayland;
    }
    const auto display = environmentValue("DISPLAY");
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

/// Differs from one login to the next, also after the machine has been started again. The same for all
/// programs of a session, however they were started.
std::string sessionMark() {
    std::string boot;
    std::getline(std::ifstream("/proc/sys/kernel/random/boot_id"), boot);
    const auto socket = serverSocket();
    return boot + " " + socket.string() + " " + birth(socket);
}

} // namespace

EarlierValue::EarlierValue(CurtainCore::UserDefaults& state, std::string name)
    : state_(state),
      name_(std::move(name)) {}

std::optional<std::string> EarlierValue::get() const {
    const auto text = state_.string(name_);
    const auto end = text ? text->find('\n') : std::string::npos;
    return end == std::string::npos ? std::nullopt : std::optional(text->substr(end + 1));
}

bool EarlierValue::isOfThisSession() const {
    const auto text = state_.string(name_);
    return text && text->starts_with(sessionMark() + "\n");
}

void EarlierValue::keep(const std::string& value) {
    state_.setString(name_, sessionMark() + "\n" + value);
}

void EarlierValue::forget() {
    if (state_.contains(name_)) {
        state_.remove(name_);
    }
}

void EarlierValue::replace(const std::optional<std::string>& value) {
    if (value) {
        keep(*value);
    } else {
        forget();
    }
}

} // namespace LinuxPlatform
