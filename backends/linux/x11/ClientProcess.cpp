#include "backends/linux/x11/ClientProcess.h"

namespace backends {

xcb_res_query_client_ids_cookie_t askProcess(xcb_connection_t* wire, xcb_window_t window)
{
    xcb_res_client_id_spec_t const spec { window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID };
    return xcb_res_query_client_ids(wire, 1, &spec);
}

std::optional<std::uint32_t> processIn(xcb_res_query_client_ids_reply_t const* reply)
{
    if (!reply)
        return std::nullopt;
    auto const ids = xcb_res_query_client_ids_ids_iterator(reply);
    if (ids.rem == 0 || xcb_res_client_id_value_value_length(ids.data) == 0)
        return std::nullopt;
    return xcb_res_client_id_value_value(ids.data)[0];
}

} // namespace backends
