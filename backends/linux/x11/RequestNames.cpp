#include "backends/linux/x11/RequestNames.h"

#include <cinttypes>
#include <cstdio>
#include <iterator>

namespace backends {

std::string nameOfRequest(std::uint8_t majorOpcode, std::uint16_t minorOpcode)
{
    switch (majorOpcode) {
    case XCB_CHANGE_WINDOW_ATTRIBUTES:
        return "ChangeWindowAttributes";
    case XCB_GET_WINDOW_ATTRIBUTES:
        return "GetWindowAttributes";
    case XCB_MAP_WINDOW:
        return "MapWindow";
    case XCB_CONFIGURE_WINDOW:
        return "ConfigureWindow";
    case XCB_GET_GEOMETRY:
        return "GetGeometry";
    case XCB_QUERY_TREE:
        return "QueryTree";
    case XCB_CHANGE_PROPERTY:
        return "ChangeProperty";
    case XCB_DELETE_PROPERTY:
        return "DeleteProperty";
    case XCB_GET_PROPERTY:
        return "GetProperty";
    case XCB_GET_SELECTION_OWNER:
        return "GetSelectionOwner";
    case XCB_SEND_EVENT:
        return "SendEvent";
    case XCB_GRAB_KEYBOARD:
        return "GrabKeyboard";
    case XCB_UNGRAB_KEYBOARD:
        return "UngrabKeyboard";
    case XCB_GRAB_KEY:
        return "GrabKey";
    case XCB_UNGRAB_KEY:
        return "UngrabKey";
    case XCB_ALLOW_EVENTS:
        return "AllowEvents";
    case XCB_TRANSLATE_COORDINATES:
        return "TranslateCoordinates";
    case XCB_SET_INPUT_FOCUS:
        return "SetInputFocus";
    default:
        break;
    }
    return "request " + std::to_string(majorOpcode) + "." + std::to_string(minorOpcode);
}

std::string nameOfError(std::uint8_t errorCode)
{
    constexpr char const* names[] = { "Success", "BadRequest", "BadValue", "BadWindow", "BadPixmap", "BadAtom",
        "BadCursor", "BadFont", "BadMatch", "BadDrawable", "BadAccess", "BadAlloc", "BadColor", "BadGC", "BadIDChoice",
        "BadName", "BadLength", "BadImplementation" };
    if (errorCode < std::size(names))
        return names[errorCode];
    return "error " + std::to_string(errorCode);
}

char const* nameOfConnectionError(int code)
{
    switch (code) {
    case XCB_CONN_ERROR:
        return "the connection was closed";
    case XCB_CONN_CLOSED_EXT_NOTSUPPORTED:
        return "an extension is not supported";
    case XCB_CONN_CLOSED_MEM_INSUFFICIENT:
        return "out of memory";
    case XCB_CONN_CLOSED_REQ_LEN_EXCEED:
        return "a request was too long";
    case XCB_CONN_CLOSED_PARSE_ERR:
        return "the display's name is no name";
    default:
        return "the screen is not there";
    }
}

void logXError(platform::OSLog const& log, xcb_generic_error_t const& error)
{
    char resource[16];
    std::snprintf(resource, sizeof resource, "0x%" PRIx32, error.resource_id);
    auto const request = nameOfRequest(error.major_code, error.minor_code);
    auto const cause = nameOfError(error.error_code);
    constexpr auto format = "X request %{public}s failed: %{public}s, resource %{public}s";
    if (error.error_code == XCB_WINDOW || error.error_code == XCB_DRAWABLE)
        log.debug(format, { request, cause, std::string(resource) });
    else
        log.error(format, { request, cause, std::string(resource) });
}

} // namespace backends
