#include "backends/linux/x11/X11Keyboard.h"

#include "backends/linux/x11/KeyPositions.h"
#include "backends/linux/x11/Xkb.h"

#include <string_view>

namespace backends {

using platform::NSEventModifierFlags;

namespace {

// Four bytes, of which a short name fills the first.
std::string nameIn(char const* bytes)
{
    std::string_view const name(bytes, 4);
    return std::string(name.substr(0, name.find('\0')));
}

} // namespace

X11Keyboard::X11Keyboard(Connection& connection)
    : m_connection(connection)
{
}

void X11Keyboard::start(std::function<void()> didChange)
{
    m_didChange = std::move(didChange);
    if (!m_connection.keyboard().isPresent)
        return;
    constexpr std::uint16_t events = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_NAMES_NOTIFY;
    xcb_xkb_select_events(m_connection.wire(), XCB_XKB_ID_USE_CORE_KBD, events, 0, events, 0, 0, nullptr);
    // A held key then repeats its press alone, so that its release can be told from a repetition.
    constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    auto const cookie = xcb_xkb_per_client_flags(m_connection.wire(), XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0);
    xcb_discard_reply(m_connection.wire(), cookie.sequence);
    readNames();
}

void X11Keyboard::handle(xcb_generic_event_t const& event)
{
    auto const& keyboard = m_connection.keyboard();
    if (!keyboard.isPresent || (event.response_type & 0x7F) != keyboard.firstEvent)
        return;
    // All events of the extension share one number; the byte after it tells which one it is.
    auto const type = event.pad0;
    if (type == XCB_XKB_NEW_KEYBOARD_NOTIFY || type == XCB_XKB_NAMES_NOTIFY)
        readNames();
}

void X11Keyboard::readNames()
{
    auto const cookie = xcb_xkb_get_names(
        m_connection.wire(), XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_NAME_DETAIL_KEY_NAMES | XCB_XKB_NAME_DETAIL_KEY_ALIASES);
    m_connection.ask<xcb_xkb_get_names_reply_t>(cookie.sequence, [this](auto const* reply) {
        if (!reply)
            return;
        xcb_xkb_get_names_value_list_t list {};
        xcb_xkb_get_names_value_list_unpack(xcb_xkb_get_names_value_list(reply), reply->nTypes, reply->indicators,
            reply->virtualMods, reply->groupNames, reply->nKeys, reply->nKeyAliases, reply->nRadioGroups, reply->which,
            &list);
        m_keycodes.clear();
        for (int i = 0; i < reply->nKeys; ++i)
            m_keycodes.emplace(nameIn(list.keyNames[i].name), static_cast<xcb_keycode_t>(reply->firstKey + i));
        for (int i = 0; i < reply->nKeyAliases; ++i) {
            auto const real = m_keycodes.find(nameIn(list.keyAliases[i].real));
            if (real != m_keycodes.end())
                m_keycodes.emplace(nameIn(list.keyAliases[i].alias), real->second);
        }
        m_didChange();
    });
}

std::optional<xcb_keycode_t> X11Keyboard::keycode(std::uint16_t virtualKeyCode) const
{
    for (auto const& position : keyPositions()) {
        if (position.virtualKeyCode != virtualKeyCode)
            continue;
        auto const found = m_keycodes.find(position.name);
        if (found != m_keycodes.end())
            return found->second;
    }
    return std::nullopt;
}

std::optional<std::uint16_t> X11Keyboard::virtualKeyCode(xcb_keycode_t keycode) const
{
    for (auto const& position : keyPositions()) {
        auto const found = m_keycodes.find(position.name);
        if (found != m_keycodes.end() && found->second == keycode)
            return position.virtualKeyCode;
    }
    return std::nullopt;
}

NSEventModifierFlags X11Keyboard::modifierFlags(std::uint16_t state)
{
    NSEventModifierFlags flags;
    if (state & XCB_MOD_MASK_LOCK)
        flags |= NSEventModifierFlags::capsLock;
    if (state & XCB_MOD_MASK_SHIFT)
        flags |= NSEventModifierFlags::shift;
    if (state & XCB_MOD_MASK_CONTROL)
        flags |= NSEventModifierFlags::control;
    if (state & XCB_MOD_MASK_1)
        flags |= NSEventModifierFlags::option;
    if (state & XCB_MOD_MASK_4)
        flags |= NSEventModifierFlags::command;
    return flags;
}

} // namespace backends
