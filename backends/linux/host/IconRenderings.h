#pragma once

#include "platform/foundation/Result.h"

#include <cstdint>
#include <string>
#include <vector>

namespace backends {

// A square picture: row by row, four bytes a pixel, alpha, red, green, blue, not multiplied. This is what panels take.
struct IconRendering {
    int size = 0;
    std::vector<std::uint8_t> pixels {};
};

// The pictures that were made of an icon while its bundle was built, smallest first. They lie beside the icon itself,
// "icon.argb" beside "icon.pdf".
platform::Result<std::vector<IconRendering>> readIconRenderings(std::string const& iconPath);

// The shape of a picture in another colour: red, green and blue, a byte each.
IconRendering tinted(IconRendering rendering, std::uint32_t colour);

// A picture of one colour, made fit for any ground: what is dark gets a light edge around it.
IconRendering withLightEdge(IconRendering const& rendering);

} // namespace backends
