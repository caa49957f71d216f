#pragma once

#include "tests/linux/Client.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// What a part of the screen looks like, pixel by pixel.
class Screenshot {
public:
    // Of the whole screen.
    explicit Screenshot(Client& client);
    Screenshot(Client& client, Geometry area);

    // The smallest rectangle around all pixels of the colour 0xRRGGBB, on the screen.
    std::optional<Geometry> find(std::uint32_t colour) const;
    // How many colours it has: drawn letters have many.
    int colours() const;
    // Keeps it as NAME.png in "artefacts" of the build folder, for people to look at.
    void keep(std::string const& name) const;

private:
    Geometry m_area;
    std::vector<std::uint32_t> m_pixels;
};

} // namespace paneweld_tests
