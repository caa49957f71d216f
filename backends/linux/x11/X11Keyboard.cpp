#include "backends/linux/x11/X11Keyboard.h"

#include "backends/linux/x11/Xkb.h"

#include <string_view>
#include <utility>

namespace backends {

namespace {

constexpr std::uint16_t watchedEvents
    = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_NAMES_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
constexpr std::uint16_t watchedParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS
    | XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS | XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;

// Four bytes, of which a short name fills the first.
std::string nameIn(char const* bytes)
{
    std::string_view const name(bytes, 4);
    return std::string(name.substr(0, name.find('\0')));
}

} // namespace

X11Keyboard::X11Keyboard(Connection& connection, platform::HotKeyModifierKeys const& modifierKeys)
    : m_connection(connection)
    , m_modifierKeys(modifierKeys)
    , m_map(std::make_shared<KeyboardMap>())
{
}

void X11Keyboard::start(std::function<void()> didChange, DetectableRepeat detectableRepeat)
{
    m_didChange = std::move(didChange);
    if (!m_connection.keyboard().isPresent)
        return;
    xcb_xkb_select_events(m_connection.wire(), XCB_XKB_ID_USE_CORE_KBD, watchedEvents, 0,
        watchedEvents & ~XCB_XKB_EVENT_TYPE_MAP_NOTIFY, watchedParts, watchedParts, nullptr);
    if (detectableRepeat == DetectableRepeat::Wanted) {
        constexpr std::uint32_t flag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
        auto const cookie = xcb_xkb_per_client_flags(m_connection.wire(), XCB_XKB_ID_USE_CORE_KBD, flag, flag, 0, 0, 0);
        m_connection.ask<xcb_xkb_per_client_flags_reply_t>(cookie.sequence,
            [this, flag](auto const* reply) { m_tellsRepetitions = reply && (reply->value & flag) != 0; });
    }
    read();
}

void X11Keyboard::handle(xcb_generic_event_t const& event)
{
    auto const& keyboard = m_connection.keyboard();
    if (!keyboard.isPresent)
        return;
    auto const type = event.response_type & 0x7F;
    // All events of the extension share one number; the byte after it tells which one it is. Some changes are told in
    // the old way only.
    bool const isOurs = type == keyboard.firstEvent
        && (event.pad0 == XCB_XKB_NEW_KEYBOARD_NOTIFY || event.pad0 == XCB_XKB_NAMES_NOTIFY
            || event.pad0 == XCB_XKB_MAP_NOTIFY);
    if (isOurs || type == XCB_MAPPING_NOTIFY)
        read();
}

// A change is told in several events, and each switch from one keyboard to another is one: one round of questions at a
// time, and one more when something came meanwhile.
void X11Keyboard::read()
{
    if (std::exchange(m_isReading, true)) {
        m_mustReadAgain = true;
        return;
    }
    auto const map = std::make_shared<KeyboardMap>();
    readNames(map);
    readSymbols(map);
    readModifiers(map);
}

void X11Keyboard::readNames(std::shared_ptr<KeyboardMap> const& map)
{
    auto const cookie = xcb_xkb_get_names(
        m_connection.wire(), XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_NAME_DETAIL_KEY_NAMES | XCB_XKB_NAME_DETAIL_KEY_ALIASES);
    m_connection.ask<xcb_xkb_get_names_reply_t>(cookie.sequence, [map](auto const* reply) {
        if (!reply)
            return;
        xcb_xkb_get_names_value_list_t list {};
        xcb_xkb_get_names_value_list_unpack(xcb_xkb_get_names_value_list(reply), reply->nTypes, reply->indicators,
            reply->virtualMods, reply->groupNames, reply->nKeys, reply->nKeyAliases, reply->nRadioGroups, reply->which,
            &list);
        auto& keycodes = map->keycodes;
        for (int i = 0; i < reply->nKeys; ++i)
            keycodes.emplace(nameIn(list.keyNames[i].name), static_cast<xcb_keycode_t>(reply->firstKey + i));
        for (int i = 0; i < reply->nKeyAliases; ++i) {
            auto const real = keycodes.find(nameIn(list.keyAliases[i].real));
            if (real != keycodes.end())
                keycodes.emplace(nameIn(list.keyAliases[i].alias), real->second);
        }
    });
}

void X11Keyboard::readSymbols(std::shared_ptr<KeyboardMap> const& map)
{
    auto const& setup = m_connection.setup();
    auto const count = static_cast<std::uint8_t>(setup.max_keycode - setup.min_keycode + 1);
    auto const cookie = xcb_get_keyboard_mapping(m_connection.wire(), setup.min_keycode, count);
    m_connection.ask<xcb_get_keyboard_mapping_reply_t>(
        cookie.sequence, [map, first = setup.min_keycode](auto const* reply) {
            if (!reply)
                return;
            map->firstKeycode = first;
            map->symbolsPerKey = reply->keysyms_per_keycode;
            auto const* const symbols = xcb_get_keyboard_mapping_keysyms(reply);
            map->symbols.assign(symbols, symbols + xcb_get_keyboard_mapping_keysyms_length(reply));
        });
}

void X11Keyboard::readModifiers(std::shared_ptr<KeyboardMap> const& map)
{
    auto const cookie = xcb_get_modifier_mapping(m_connection.wire());
    m_connection.ask<xcb_get_modifier_mapping_reply_t>(cookie.sequence, [this, map](auto const* reply) {
        if (reply) {
            map->keysPerModifier = reply->keycodes_per_modifier;
            auto const* const keys = xcb_get_modifier_mapping_keycodes(reply);
            map->modifierKeys.assign(keys, keys + xcb_get_modifier_mapping_keycodes_length(reply));
        }
        publish(map);
    });
}

void X11Keyboard::publish(std::shared_ptr<KeyboardMap const> map)
{
    m_isReading = false;
    if (std::exchange(m_mustReadAgain, false))
        read();
    if (*map == *m_map)
        return;
    {
        std::lock_guard const lock(m_mutex);
        m_map = std::move(map);
    }
    m_didChange();
}

std::shared_ptr<KeyboardMap const> X11Keyboard::map() const
{
    std::lock_guard const lock(m_mutex);
    return m_map;
}

platform::NSEventModifierFlags X11Keyboard::modifierFlags(std::uint16_t state) const
{
    return m_map->modifierFlags(state, m_modifierKeys);
}

} // namespace backends
