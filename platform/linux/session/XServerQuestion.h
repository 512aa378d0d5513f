#pragma once

#include "platform/linux/session/SessionProbe.h"

#include <optional>
#include <string>

namespace LinuxPlatform {

/// Asks an X server who it is, on a connection that is closed again. Absent when it cannot be reached. Waits
/// for as long as the server takes.
/// Source: the server's extension XWAYLAND, or the names that it gives to its outputs where it is older than
/// that; EWMH for the window manager.
std::optional<XServerAnswer> askXServer(const std::string& display);

} // namespace LinuxPlatform
