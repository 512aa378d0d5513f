#pragma once

#include "platform/linux/x11/X11Connection.h"

#include <xcb/res.h>

#include <cstdint>
#include <optional>

namespace LinuxPlatform {

/// Asks which process holds the connection that a resource belongs to (X-Resource extension 1.2). A server
/// with an older version of the extension answers with an error; one without it must not be asked.
xcb_res_query_client_ids_cookie_t askClientProcess(const X11Connection& connection, std::uint32_t resource);

/// Waits for the answer. Absent after an error, and where the process runs on another machine.
std::optional<std::uint32_t> receiveClientProcess(X11Connection& connection,
                                                  xcb_res_query_client_ids_cookie_t question);

} // namespace LinuxPlatform
