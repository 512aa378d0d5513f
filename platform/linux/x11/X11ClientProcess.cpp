#include "platform/linux/x11/X11ClientProcess.h"

namespace LinuxPlatform {

xcb_res_query_client_ids_cookie_t askClientProcess(const X11Connection& connection, std::uint32_t resource) {
    const xcb_res_client_id_spec_t spec{resource, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    return xcb_res_query_client_ids(connection.get(), 1, &spec);
}

std::optional<std::uint32_t> receiveClientProcess(X11Connection& connection,
                                                  xcb_res_query_client_ids_cookie_t question) {
    const auto reply = connection.reply<xcb_res_query_client_ids_reply>(question);
    if (!reply) {
        return std::nullopt;
    }
    for (auto id = xcb_res_query_client_ids_ids_iterator(reply.get()); id.rem > 0;
         xcb_res_client_id_value_next(&id)) {
        const bool isProcess = (id.data->spec.mask & XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID) != 0;
        if (isProcess && xcb_res_client_id_value_value_length(id.data) > 0) {
            const auto process = *xcb_res_client_id_value_value(id.data);
            return process != 0 ? std::optional(process) : std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace LinuxPlatform
