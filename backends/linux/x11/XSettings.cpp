#include "backends/linux/x11/XSettings.h"

#include <algorithm>
#include <charconv>

namespace backends {

namespace {

constexpr std::uint8_t mostSignificantByteFirst = 1;
constexpr double ordinaryDotsPerInch = 96;
constexpr double largestFactor = 8;

enum class SettingType : std::uint8_t { Integer = 0, Text = 1, Colour = 2 };

// Reads what it can; everything after the end is absent.
class Reader {
public:
    explicit Reader(std::string_view bytes)
        : m_rest(bytes)
    {
        m_isBigEndian = !bytes.empty() && static_cast<std::uint8_t>(bytes[0]) == mostSignificantByteFirst;
    }

    std::optional<std::uint32_t> number(std::size_t size)
    {
        auto const bytes = text(size);
        if (!bytes)
            return std::nullopt;
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            auto const byte = static_cast<std::uint8_t>((*bytes)[m_isBigEndian ? i : size - 1 - i]);
            value = value << 8 | byte;
        }
        return value;
    }

    std::optional<std::string_view> text(std::size_t size)
    {
        if (m_rest.size() < size)
            return std::nullopt;
        auto const taken = m_rest.substr(0, size);
        m_rest.remove_prefix(size);
        return taken;
    }

    std::optional<std::string_view> paddedText(std::size_t size)
    {
        auto const taken = text((size + 3) / 4 * 4);
        if (!taken)
            return std::nullopt;
        return taken->substr(0, size);
    }

private:
    std::string_view m_rest;
    bool m_isBigEndian = false;
};

// False when the setting is cut off.
bool readSetting(Reader& reader, Settings& settings)
{
    auto const type = reader.number(1);
    auto const padding = reader.number(1);
    auto const nameLength = reader.number(2);
    if (!type || !padding || !nameLength)
        return false;
    auto const name = reader.paddedText(*nameLength);
    auto const serial = reader.number(4);
    if (!name || !serial)
        return false;
    switch (static_cast<SettingType>(*type)) {
    case SettingType::Integer: {
        auto const value = reader.number(4);
        if (value)
            settings.integers[std::string(*name)] = static_cast<std::int32_t>(*value);
        return value.has_value();
    }
    case SettingType::Text: {
        auto const length = reader.number(4);
        auto const value = length ? reader.paddedText(*length) : std::nullopt;
        if (value)
            settings.texts[std::string(*name)] = *value;
        return value.has_value();
    }
    case SettingType::Colour:
        return reader.text(8).has_value();
    }
    return false;
}

} // namespace

std::string Settings::text(std::string_view name) const
{
    auto const found = texts.find(name);
    return found == texts.end() ? std::string {} : found->second;
}

std::optional<Settings> settingsIn(std::string_view bytes)
{
    Reader reader(bytes);
    Settings settings;
    auto const header = reader.text(8);
    auto const count = reader.number(4);
    if (!header || !count)
        return std::nullopt;
    for (std::uint32_t i = 0; i < *count; ++i) {
        if (!readSetting(reader, settings))
            return std::nullopt;
    }
    return settings;
}

std::optional<double> numberResource(std::string_view resources, std::string_view name)
{
    while (!resources.empty()) {
        auto const end = std::min(resources.find('\n'), resources.size());
        auto line = resources.substr(0, end);
        resources.remove_prefix(std::min(end + 1, resources.size()));
        if (!line.starts_with(name))
            continue;
        line.remove_prefix(name.size());
        auto const start = line.find_first_not_of(" \t");
        if (start == std::string_view::npos || line[start] != ':')
            continue;
        auto const valueStart = line.find_first_not_of(" \t", start + 1);
        if (valueStart == std::string_view::npos)
            continue;
        double value = 0;
        auto const [rest, error] = std::from_chars(line.data() + valueStart, line.data() + line.size(), value);
        if (error == std::errc {})
            return value;
    }
    return std::nullopt;
}

double scaleFactor(Settings const& settings, std::string_view resources)
{
    if (auto const found = settings.integers.find("Gdk/WindowScalingFactor");
        found != settings.integers.end() && found->second > 1)
        return std::min<double>(found->second, largestFactor);
    // In 1024ths; -1 stands for "whatever".
    auto dotsPerInch = ordinaryDotsPerInch;
    if (auto const found = settings.integers.find("Xft/DPI"); found != settings.integers.end() && found->second > 0)
        dotsPerInch = found->second / 1024.0;
    else if (auto const resource = numberResource(resources, "Xft.dpi"))
        dotsPerInch = *resource;
    return std::clamp(dotsPerInch / ordinaryDotsPerInch, 1.0, largestFactor);
}

} // namespace backends
