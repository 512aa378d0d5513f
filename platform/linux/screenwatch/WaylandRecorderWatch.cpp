#include "platform/linux/screenwatch/WaylandRecorderWatch.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace LinuxPlatform {
namespace {

constexpr std::array<std::string_view, 2> recorders{"wf-recorder", "wl-screenrec"};

} // namespace

WaylandRecorderWatch::WaylandRecorderWatch(std::filesystem::path socket, ProcessTable processes)
    : socket_(std::move(socket)),
      processes_(std::move(processes)) {}

std::optional<bool> WaylandRecorderWatch::isScreenCaptured() {
    return std::ranges::any_of(processes_.ownProcesses(), [this](std::uint32_t process) {
        const auto program = processes_.program(process);
        return program && std::ranges::find(recorders, *program) != recorders.end() &&
               isOfThisSession(process);
    });
}

bool WaylandRecorderWatch::isOfThisSession(std::uint32_t process) const {
    const std::filesystem::path display =
        processes_.environmentVariable(process, "WAYLAND_DISPLAY").value_or("wayland-0");
    const std::filesystem::path folder =
        processes_.environmentVariable(process, "XDG_RUNTIME_DIR").value_or("");
    return folder / display == socket_;
}

} // namespace LinuxPlatform
