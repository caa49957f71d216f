#include "tests/linux/Client.h"

#include "backends/linux/x11/Handles.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <poll.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/xtest.h>

namespace paneweld_tests {

namespace {

constexpr std::chrono::seconds patience { 10 };
constexpr int lookAgainMilliseconds = 5;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template<typename T>
std::unique_ptr<T, Free> owned(T* reply)
{
    return std::unique_ptr<T, Free>(reply);
}

} // namespace

Client::Client(std::string const& display)
    : m_display(display)
    , m_connection(xcb_connect(display.c_str(), nullptr))
    , m_screen(nullptr)
{
    if (xcb_connection_has_error(m_connection)) {
        ADD_FAILURE() << "cannot connect to " << display;
        std::abort();
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
}

Client::~Client() { xcb_disconnect(m_connection); }

xcb_atom_t Client::atom(std::string const& name)
{
    auto const cookie = xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    auto const reply = owned(xcb_intern_atom_reply(m_connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t { XCB_ATOM_NONE };
}

void Client::sync() { owned(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr)); }

bool Client::waitUntil(std::function<bool()> condition)
{
    auto const end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        pause();
    }
    return true;
}

void Client::pause()
{
    pollfd wait { descriptor(), POLLIN, 0 };
    poll(&wait, 1, lookAgainMilliseconds);
    while (auto const event = owned(xcb_poll_for_event(m_connection))) { }
}

Geometry Client::geometry(xcb_window_t window)
{
    auto const cookie = xcb_get_geometry(m_connection, window);
    auto const place = xcb_translate_coordinates(m_connection, window, root(), 0, 0);
    auto const size = owned(xcb_get_geometry_reply(m_connection, cookie, nullptr));
    auto const position = owned(xcb_translate_coordinates_reply(m_connection, place, nullptr));
    if (!size || !position)
        return {};
    return { position->dst_x, position->dst_y, size->width, size->height };
}

std::optional<std::vector<std::uint32_t>> Client::words(xcb_window_t window, std::string const& property)
{
    auto const cookie = xcb_get_property(m_connection, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 4096);
    auto const reply = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE)
        return std::nullopt;
    auto const* data = static_cast<std::uint32_t const*>(xcb_get_property_value(reply.get()));
    return std::vector<std::uint32_t>(data, data + (reply->format == 32 ? reply->value_len : 0));
}

std::optional<std::string> Client::text(xcb_window_t window, std::string const& property)
{
    auto const cookie
        = xcb_get_property(m_connection, 0, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 0x1FFFFFFF);
    auto const reply = owned(xcb_get_property_reply(m_connection, cookie, nullptr));
    if (!reply || reply->type == XCB_ATOM_NONE)
        return std::nullopt;
    auto const* data = static_cast<char const*>(xcb_get_property_value(reply.get()));
    return std::string(data, static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
}

bool Client::isViewable(xcb_window_t window)
{
    auto const reply = owned(
        xcb_get_window_attributes_reply(m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
    return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool Client::hasState(xcb_window_t window, std::string const& state)
{
    auto const states = words(window, "_NET_WM_STATE");
    return states && std::find(states->begin(), states->end(), atom(state)) != states->end();
}

double Client::opacity(xcb_window_t window)
{
    auto const value = words(window, "_NET_WM_WINDOW_OPACITY");
    return value && !value->empty() ? value->front() / double { 0xFFFFFFFF } : 1;
}

bool Client::hasEmptyShape(xcb_window_t window)
{
    auto const cookie = xcb_shape_query_extents(m_connection, window);
    auto const reply = owned(xcb_shape_query_extents_reply(m_connection, cookie, nullptr));
    return reply && reply->bounding_shaped
        && (reply->bounding_shape_extents_width == 0 || reply->bounding_shape_extents_height == 0);
}

xcb_window_t Client::checkWindow()
{
    auto const window = words(root(), "_NET_SUPPORTING_WM_CHECK");
    if (!window || window->empty())
        return XCB_WINDOW_NONE;
    auto const echo = words(window->front(), "_NET_SUPPORTING_WM_CHECK");
    return echo && *echo == *window ? window->front() : xcb_window_t { XCB_WINDOW_NONE };
}

xcb_window_t Client::selectionOwner(std::string const& selection)
{
    auto const cookie = xcb_get_selection_owner(m_connection, atom(selection));
    auto const reply = owned(xcb_get_selection_owner_reply(m_connection, cookie, nullptr));
    return reply ? reply->owner : xcb_window_t { XCB_WINDOW_NONE };
}

xcb_window_t Client::activeWindow()
{
    auto const window = words(root(), "_NET_ACTIVE_WINDOW");
    return window && !window->empty() ? window->front() : xcb_window_t { XCB_WINDOW_NONE };
}

xcb_window_t Client::frameOf(xcb_window_t window)
{
    while (true) {
        auto const reply = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (!reply || reply->parent == root() || reply->parent == XCB_WINDOW_NONE)
            return window;
        window = reply->parent;
    }
}

void Client::placeFrameOf(xcb_window_t window, Geometry const& place)
{
    auto const frame = frameOf(window);
    std::uint32_t const isFree = 1;
    xcb_change_window_attributes(m_connection, frame, XCB_CW_OVERRIDE_REDIRECT, &isFree);
    std::uint32_t const values[] { static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
        static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height) };
    xcb_configure_window(m_connection, frame,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    sync();
}

std::vector<xcb_window_t> Client::children(xcb_window_t window)
{
    auto const reply = owned(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
    if (!reply)
        return {};
    auto const* const first = xcb_query_tree_children(reply.get());
    return { first, first + xcb_query_tree_children_length(reply.get()) };
}

xcb_window_t Client::find(xcb_window_t below, std::function<bool(xcb_window_t)> const& isMeant)
{
    if (isMeant(below))
        return below;
    for (auto const child : children(below)) {
        if (auto const found = find(child, isMeant); found != XCB_WINDOW_NONE)
            return found;
    }
    return XCB_WINDOW_NONE;
}

bool Client::isAbove(xcb_window_t first, xcb_window_t second)
{
    auto const upper = frameOf(first);
    auto const lower = frameOf(second);
    auto const all = children(root());
    return std::find(all.begin(), all.end(), upper) > std::find(all.begin(), all.end(), lower);
}

std::uint32_t Client::pixel(int x, int y)
{
    auto const seen = pixels({ x, y, 1, 1 });
    return seen.empty() ? 0 : seen.front();
}

std::vector<std::uint32_t> Client::pixels(Geometry const& place)
{
    auto const cookie = xcb_get_image(m_connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root(),
        static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
        static_cast<std::uint16_t>(place.height), 0xFFFFFFFF);
    auto const reply = owned(xcb_get_image_reply(m_connection, cookie, nullptr));
    std::vector<std::uint32_t> pixels;
    for (int i = 0; reply && i < place.width * place.height; ++i)
        pixels.push_back(reinterpret_cast<std::uint32_t const*>(xcb_get_image_data(reply.get()))[i] & 0xFFFFFF);
    return pixels;
}

void Client::press(xcb_keycode_t key)
{
    xcb_test_fake_input(m_connection, XCB_KEY_PRESS, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    sync();
}

void Client::release(xcb_keycode_t key)
{
    xcb_test_fake_input(m_connection, XCB_KEY_RELEASE, key, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    sync();
}

void Client::movePointer(int x, int y)
{
    xcb_test_fake_input(m_connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, root(), static_cast<std::int16_t>(x),
        static_cast<std::int16_t>(y), 0);
    sync();
}

void Client::button(int number, bool isDown)
{
    xcb_test_fake_input(m_connection, isDown ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(number),
        XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0, 0);
    sync();
}

void Client::click()
{
    button(1, true);
    button(1, false);
}

bool Client::grabKey(xcb_window_t window, xcb_keycode_t key, std::uint16_t modifiers)
{
    backends::XHandle<xcb_generic_error_t> const error(xcb_request_check(m_connection,
        xcb_grab_key_checked(m_connection, 0, window, modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    return !error;
}

void Client::ungrabKey(xcb_window_t window, xcb_keycode_t key, std::uint16_t modifiers)
{
    xcb_ungrab_key(m_connection, key, window, modifiers);
    sync();
}

bool Client::isKeyFree(xcb_window_t window, xcb_keycode_t key, std::uint16_t modifiers)
{
    bool const isFree = grabKey(window, key, modifiers);
    if (isFree)
        ungrabKey(window, key, modifiers);
    return isFree;
}

std::size_t Client::resourceCount(xcb_window_t window)
{
    auto const cookie = xcb_res_query_client_resources(m_connection, window);
    auto const reply = owned(xcb_res_query_client_resources_reply(m_connection, cookie, nullptr));
    std::size_t count = 0;
    for (int i = 0; reply && i < xcb_res_query_client_resources_types_length(reply.get()); ++i)
        count += xcb_res_query_client_resources_types(reply.get())[i].count;
    return count;
}

xcb_client_message_event_t Client::message(
    xcb_window_t about, std::string const& type, std::vector<std::uint32_t> const& data, int format)
{
    xcb_client_message_event_t message {};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = static_cast<std::uint8_t>(format);
    message.window = about;
    message.type = atom(type);
    std::copy(data.begin(), data.end(), message.data.data32);
    return message;
}

void Client::sendToRoot(xcb_window_t about, std::string const& type, std::vector<std::uint32_t> const& data)
{
    send(root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY, message(about, type, data));
    sync();
}

} // namespace paneweld_tests
