#pragma once

#include <string>
#include <string_view>

namespace backends {

// Red, green and blue, each from 0 to 1.
struct MenuColour {
    double red = 0;
    double green = 0;
    double blue = 0;

    bool operator==(MenuColour const&) const = default;
};

// How a menu of ours looks: near enough to the desktop's own menus that nobody stumbles.
struct MenuTheme {
    MenuColour background {};
    MenuColour border {};
    MenuColour separator {};
    MenuColour text {};
    // Shortcuts, which are there to be learned and not to be read every time.
    MenuColour shortcut {};
    MenuColour disabled {};
    MenuColour highlight {};
    MenuColour highlightedText {};
    // As desktops write it: family, style and size in points ("Cantarell Bold 11").
    std::string font {};

    // From the names that the desktop gives its theme and its font (XSETTINGS Net/ThemeName and Gtk/FontName). Empty
    // names stand for a desktop that tells none: light, and the font that the machine has for text.
    static MenuTheme named(std::string_view themeName, std::string_view fontName);
};

} // namespace backends
