#include "backends/linux/host/IconRenderings.h"

#include "backends/linux/host/FileSystem.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>

namespace backends {

using platform::NSError;

namespace {

constexpr std::uint32_t largestSize = 1024;
constexpr std::uint32_t mostPictures = 64;

std::optional<std::uint32_t> take32(std::string_view& bytes)
{
    if (bytes.size() < 4)
        return std::nullopt;
    std::uint32_t number = 0;
    for (int i = 0; i < 4; ++i)
        number = number << 8 | static_cast<std::uint8_t>(bytes[static_cast<std::size_t>(i)]);
    bytes.remove_prefix(4);
    return number;
}

std::optional<IconRendering> takeRendering(std::string_view& bytes)
{
    auto const width = take32(bytes);
    auto const height = take32(bytes);
    if (!width || !height || *width != *height || *width == 0 || *width > largestSize)
        return std::nullopt;
    std::size_t const length = std::size_t { 4 } * *width * *height;
    if (bytes.size() < length)
        return std::nullopt;
    IconRendering rendering { static_cast<int>(*width), { bytes.begin(), bytes.begin() + static_cast<long>(length) } };
    bytes.remove_prefix(length);
    return rendering;
}

std::optional<std::vector<IconRendering>> takeAll(std::string_view bytes)
{
    constexpr std::string_view magic = "PWRN";
    if (!bytes.starts_with(magic))
        return std::nullopt;
    bytes.remove_prefix(magic.size());
    auto const count = take32(bytes);
    if (!count || *count > mostPictures)
        return std::nullopt;
    std::vector<IconRendering> renderings;
    for (std::uint32_t i = 0; i < *count; ++i) {
        auto rendering = takeRendering(bytes);
        if (!rendering)
            return std::nullopt;
        renderings.push_back(std::move(*rendering));
    }
    if (!bytes.empty())
        return std::nullopt;
    return renderings;
}

} // namespace

platform::Result<std::vector<IconRendering>> readIconRenderings(std::string const& iconPath)
{
    auto const path = std::filesystem::path(iconPath).replace_extension("argb").string();
    auto const bytes = readFile(path);
    if (!bytes) {
        auto const& cause = bytes.error();
        return NSError { cause.domain, cause.code, path + ": " + cause.localizedDescription };
    }
    auto renderings = takeAll(bytes.value());
    if (!renderings)
        return NSError { "IconRenderings", 1, path + " is no set of pictures" };
    std::sort(renderings->begin(), renderings->end(), [](auto const& a, auto const& b) { return a.size < b.size; });
    return std::move(*renderings);
}

IconRendering tinted(IconRendering rendering, std::uint32_t colour)
{
    for (std::size_t i = 0; i + 4 <= rendering.pixels.size(); i += 4) {
        for (std::size_t channel = 1; channel < 4; ++channel)
            rendering.pixels[i + channel] = static_cast<std::uint8_t>(colour >> 8 * (3 - channel));
    }
    return rendering;
}

IconRendering withLightEdge(IconRendering const& rendering)
{
    auto const alphaAt = [&](int x, int y) -> int {
        bool const isInside = x >= 0 && y >= 0 && x < rendering.size && y < rendering.size;
        return isInside ? rendering.pixels[static_cast<std::size_t>(4 * (y * rendering.size + x))] : 0;
    };
    auto edged = rendering;
    for (int y = 0; y < rendering.size; ++y) {
        for (int x = 0; x < rendering.size; ++x) {
            int around = 0;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx)
                    around = std::max(around, alphaAt(x + dx, y + dy));
            }
            // The edge lies below the drawing, and is a little clear itself.
            int const drawn = alphaAt(x, y);
            int const edge = around * 4 / 5 * (255 - drawn) / 255;
            auto* const pixel = &edged.pixels[static_cast<std::size_t>(4 * (y * rendering.size + x))];
            int const alpha = drawn + edge;
            for (int channel = 1; alpha != 0 && channel < 4; ++channel)
                pixel[channel] = static_cast<std::uint8_t>((pixel[channel] * drawn + 255 * edge) / alpha);
            pixel[0] = static_cast<std::uint8_t>(alpha);
        }
    }
    return edged;
}

} // namespace backends
