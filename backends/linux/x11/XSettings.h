#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace backends {

// A desktop's settings, by name; its colours are not kept.
struct Settings {
    std::map<std::string, std::int32_t, std::less<>> integers {};
    std::map<std::string, std::string, std::less<>> texts {};

    // Empty for a text that nobody set.
    std::string text(std::string_view name) const;
};

// As the settings' owner writes them down (XSETTINGS, "Setting the property"). Absent when the bytes are cut off or of
// another form.
std::optional<Settings> settingsIn(std::string_view bytes);

// A whole number or a fraction among the X resources of the root window ("Xft.dpi:\t96").
std::optional<double> numberResource(std::string_view resources, std::string_view name);

// How many pixels make one point: the desktop's whole scaling factor where it is more than 1, else the fonts' dots per
// inch over 96. Never less than 1.
double scaleFactor(Settings const& settings, std::string_view resources);

} // namespace backends
