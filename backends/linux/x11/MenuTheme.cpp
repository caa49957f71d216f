#include "backends/linux/x11/MenuTheme.h"

#include "platform/foundation/Text.h"

#include <algorithm>
#include <array>

namespace backends {

namespace {

constexpr std::string_view ordinaryFont = "Sans 10";

// Themes tell of their darkness by their names alone: "Adwaita-dark", "Breeze-Dark", "HighContrastInverse".
constexpr std::array<std::string_view, 4> darkWords { "dark", "inverse", "black", "night" };

constexpr MenuColour colour(unsigned rgb)
{
    return { (rgb >> 16 & 0xFF) / 255.0, (rgb >> 8 & 0xFF) / 255.0, (rgb & 0xFF) / 255.0 };
}

MenuTheme lightTheme()
{
    return { .background = colour(0xFCFCFC),
        .border = colour(0xBDBDBD),
        .separator = colour(0xDEDEDE),
        .text = colour(0x242424),
        .shortcut = colour(0x6B6B6B),
        .disabled = colour(0x9C9C9C),
        .highlight = colour(0x2F7BDE),
        .highlightedText = colour(0xFFFFFF) };
}

MenuTheme darkTheme()
{
    return { .background = colour(0x303030),
        .border = colour(0x575757),
        .separator = colour(0x484848),
        .text = colour(0xF2F2F2),
        .shortcut = colour(0xABABAB),
        .disabled = colour(0x7D7D7D),
        .highlight = colour(0x2A6FC9),
        .highlightedText = colour(0xFFFFFF) };
}

} // namespace

MenuTheme MenuTheme::named(std::string_view themeName, std::string_view fontName)
{
    auto const name = platform::asciiLowerCase(themeName);
    bool const isDark = std::any_of(
        darkWords.begin(), darkWords.end(), [&](auto word) { return name.find(word) != std::string::npos; });
    auto theme = isDark ? darkTheme() : lightTheme();
    theme.font = fontName.empty() ? ordinaryFont : fontName;
    return theme;
}

} // namespace backends
