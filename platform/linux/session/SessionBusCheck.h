#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace LinuxPlatform {

/// Whether a message bus at this address (as in DBUS_SESSION_BUS_ADDRESS) takes connections and then says
/// nothing for that long. False where there is none, and for addresses of other kinds than Unix sockets.
/// Source: https://dbus.freedesktop.org/doc, server addresses and authentication.
bool isBusSilent(std::string_view address, std::chrono::milliseconds patience);

/// Where clients of the system's message bus look for it.
std::string systemBusAddress();

/// Where clients of the session's message bus look for it; empty where nothing says so.
std::string sessionBusAddress();

/// To be called before anything connects to the session bus: libraries wait for its answer without a
/// deadline. If the bus is silent, this process goes on as one of a session that has no bus.
void leaveSilentSessionBus();

} // namespace LinuxPlatform
