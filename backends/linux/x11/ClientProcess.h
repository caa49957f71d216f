#pragma once

#include "backends/linux/x11/Connection.h"

#include <cstdint>
#include <optional>
#include <xcb/res.h>

namespace backends {

// Which process a window belongs to, as the server itself knows it (X-Resource 1.2), so that namespaces of process
// numbers do not matter when two answers are compared.
xcb_res_query_client_ids_cookie_t askProcess(xcb_connection_t* wire, xcb_window_t window);
inline xcb_res_query_client_ids_cookie_t askProcess(Connection& connection, xcb_window_t window)
{
    return askProcess(connection.wire(), window);
}

// Absent when the client is not of this machine, or has gone.
std::optional<std::uint32_t> processIn(xcb_res_query_client_ids_reply_t const* reply);

} // namespace backends
