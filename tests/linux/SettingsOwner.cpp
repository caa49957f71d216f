#include "tests/linux/SettingsOwner.h"

namespace paneweld_tests {

namespace {

std::string bytesOf(auto number) { return std::string(reinterpret_cast<char const*>(&number), sizeof number); }

std::string padded(std::string text)
{
    text.resize((text.size() + 3) / 4 * 4);
    return text;
}

enum class Type : char { Integer = 0, Text = 1 };

std::string setting(Type type, std::string const& name, std::uint32_t serial, std::string const& value)
{
    return std::string { static_cast<char>(type), 0 } + bytesOf(static_cast<std::uint16_t>(name.size())) + padded(name)
        + bytesOf(serial) + value;
}

} // namespace

SettingsOwner::SettingsOwner(std::string const& display)
    : Client(display)
    , m_window(xcb_generate_id(wire()))
{
    // No window manager's affair, and no window of a host's.
    std::uint32_t const isOverrideRedirect = 1;
    xcb_create_window(wire(), XCB_COPY_FROM_PARENT, m_window, root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
        XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, &isOverrideRedirect);
    xcb_set_selection_owner(wire(), m_window, atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
    sync();
}

void SettingsOwner::tell(backends::Settings const& settings)
{
    ++m_serial;
    // The first byte tells the order of the others: 0 where the first byte of a 1 is the 1.
    auto const isBig = bytesOf(std::uint16_t { 1 }).front() == 0;
    auto bytes = padded(std::string(1, isBig ? '\1' : '\0')) + bytesOf(m_serial)
        + bytesOf(static_cast<std::uint32_t>(settings.integers.size() + settings.texts.size()));
    for (auto const& [name, value] : settings.integers)
        bytes += setting(Type::Integer, name, m_serial, bytesOf(value));
    for (auto const& [name, text] : settings.texts)
        bytes += setting(Type::Text, name, m_serial, bytesOf(static_cast<std::uint32_t>(text.size())) + padded(text));
    auto const property = atom("_XSETTINGS_SETTINGS");
    xcb_change_property(wire(), XCB_PROP_MODE_REPLACE, m_window, property, property, 8,
        static_cast<std::uint32_t>(bytes.size()), bytes.data());
    sync();
}

void SettingsOwner::resign()
{
    xcb_destroy_window(wire(), m_window);
    sync();
}

} // namespace paneweld_tests
