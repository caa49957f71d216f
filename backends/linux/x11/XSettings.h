#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace backends {

// The whole numbers among a desktop's settings, by name (XSETTINGS, "Setting the property"). Absent when the bytes are
// cut off or of another form.
std::optional<std::map<std::string, std::int32_t>> integerSettings(std::string_view bytes);

// A whole number or a fraction among the X resources of the root window ("Xft.dpi:\t96").
std::optional<double> numberResource(std::string_view resources, std::string_view name);

// How many pixels make one point: the desktop's whole scaling factor where it is more than 1, else the fonts' dots per
// inch over 96. Never less than 1.
double scaleFactor(std::map<std::string, std::int32_t> const& settings, std::string_view resources);

} // namespace backends
