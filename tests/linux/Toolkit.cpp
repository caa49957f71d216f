#include "tests/linux/Toolkit.h"

#include <cstdlib>

namespace paneweld_tests {

xcb_window_t Toolkit::make(Window const& description)
{
    auto const window = xcb_generate_id(wire());
    auto const& place = description.geometry;
    // White, so that a pixel tells whether the window is seen.
    std::uint32_t const values[] = { screen().white_pixel, description.isOverrideRedirect ? 1u : 0u,
        XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE
            | XCB_EVENT_MASK_EXPOSURE };
    xcb_create_window(wire(), XCB_COPY_FROM_PARENT, window, root(), static_cast<std::int16_t>(place.x),
        static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
        static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    if (description.hasDeleteProtocol)
        setWords(window, "WM_PROTOCOLS", XCB_ATOM_ATOM, { atom("WM_DELETE_WINDOW") });
    std::string const names("instance\0TestApp\0", 17);
    xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
        static_cast<std::uint32_t>(names.size()), names.data());
    setTitle(window, description.title);
    return window;
}

void Toolkit::map(xcb_window_t window)
{
    xcb_map_window(wire(), window);
    sync();
}

void Toolkit::withdraw(xcb_window_t window)
{
    xcb_unmap_window(wire(), window);
    xcb_unmap_notify_event_t message {};
    message.response_type = XCB_UNMAP_NOTIFY;
    message.event = root();
    message.window = window;
    send(root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, message);
    sync();
}

void Toolkit::iconify(xcb_window_t window) { sendToRoot(window, "WM_CHANGE_STATE", { 3 }); }

void Toolkit::destroy(xcb_window_t window)
{
    xcb_destroy_window(wire(), window);
    sync();
}

void Toolkit::setTitle(xcb_window_t window, std::string const& title)
{
    for (auto const property : { atom("_NET_WM_NAME"), xcb_atom_t { XCB_ATOM_WM_NAME } }) {
        xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, window, property, atom("UTF8_STRING"), 8,
            static_cast<std::uint32_t>(title.size()), title.data());
    }
    sync();
}

void Toolkit::setWords(
    xcb_window_t window, std::string const& property, xcb_atom_t type, std::vector<std::uint32_t> const& words)
{
    xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
        static_cast<std::uint32_t>(words.size()), words.data());
    sync();
}

void Toolkit::handleEvents()
{
    while (auto* event = xcb_poll_for_event(wire())) {
        switch (event->response_type & 0x7F) {
        case XCB_KEY_PRESS:
            pressedKeys.push_back(reinterpret_cast<xcb_key_press_event_t*>(event)->detail);
            break;
        case XCB_KEY_RELEASE:
            releasedKeys.push_back(reinterpret_cast<xcb_key_release_event_t*>(event)->detail);
            break;
        case XCB_CLIENT_MESSAGE: {
            auto const& message = *reinterpret_cast<xcb_client_message_event_t*>(event);
            if (message.data.data32[0] != atom("WM_DELETE_WINDOW"))
                break;
            ++closeRequests;
            if (closesWhenAsked)
                destroy(message.window);
            break;
        }
        default:
            break;
        }
        std::free(event);
    }
}

} // namespace paneweld_tests
