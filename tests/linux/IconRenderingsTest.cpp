#include "backends/linux/host/IconRenderings.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

using backends::readIconRenderings;

namespace {

std::string const builtIcon = PANEWELD_TEST_BUNDLE "/Resources/icon.pdf";

std::string contents(std::string path)
{
    path.replace(path.size() - 3, 3, "argb");
    std::ifstream file(path, std::ios::binary);
    return { std::istreambuf_iterator<char>(file), {} };
}

} // namespace

TEST(IconRenderings, TheBundlesIconIsThereAtEverySizeThatPanelsAskFor)
{
    auto const renderings = readIconRenderings(builtIcon);
    ASSERT_TRUE(renderings.hasValue()) << renderings.error().localizedDescription;
    std::vector<int> sizes;
    for (auto const& rendering : renderings.value()) {
        sizes.push_back(rendering.size);
        ASSERT_EQ(rendering.pixels.size(), static_cast<std::size_t>(4 * rendering.size * rendering.size));
        int ink = 0;
        for (std::size_t i = 0; i < rendering.pixels.size(); i += 4) {
            ink += rendering.pixels[i] > 128;
            // A template: only its shape counts, all of it is black.
            ASSERT_EQ(rendering.pixels[i + 1] | rendering.pixels[i + 2] | rendering.pixels[i + 3], 0);
        }
        // A drawing, neither an empty square nor a full one.
        EXPECT_GT(ink, rendering.size * rendering.size / 10);
        EXPECT_LT(ink, rendering.size * rendering.size / 2);
        EXPECT_EQ(rendering.pixels[0], 0) << "the corner is clear";
    }
    EXPECT_EQ(sizes, (std::vector<int> { 16, 18, 20, 22, 24, 32, 36, 44, 48, 64, 96 }));
}

TEST(IconRenderings, AMissingOrDamagedFileIsAnErrorThatNamesIt)
{
    platform::TemporaryFolder const folder;
    auto const missing = readIconRenderings(folder.path() + "/icon.pdf");
    ASSERT_FALSE(missing.hasValue());
    EXPECT_NE(missing.error().localizedDescription.find("icon.argb"), std::string::npos);

    auto const whole = contents(builtIcon);
    for (auto const& bytes :
        { std::string(), std::string("PWRN"), whole.substr(0, whole.size() - 1), whole + "x", "X" + whole.substr(1),
            std::string("PWRN\xFF\xFF\xFF\xFF"), std::string("PWRN\0\0\0\1\0\0\0\0\0\0\0\0", 16) }) {
        folder.write("icon.argb", bytes);
        EXPECT_FALSE(readIconRenderings(folder.path() + "/icon.pdf").hasValue()) << bytes.size();
    }
}

TEST(IconRenderings, ALightEdgeMakesADarkDrawingSeenOnAnyGround)
{
    // One black dot in the middle of five by five.
    backends::IconRendering dot { 5, std::vector<std::uint8_t>(100) };
    dot.pixels[4 * 12] = 255;
    auto const edged = backends::withLightEdge(dot);
    auto const pixel = [&](int x, int y) {
        auto const* const begin = &edged.pixels[static_cast<std::size_t>(4 * (y * 5 + x))];
        return std::vector<int>(begin, begin + 4);
    };
    EXPECT_EQ(pixel(2, 2), (std::vector<int> { 255, 0, 0, 0 }));
    EXPECT_EQ(pixel(1, 2), (std::vector<int> { 204, 255, 255, 255 }));
    EXPECT_EQ(pixel(3, 3), (std::vector<int> { 204, 255, 255, 255 }));
    EXPECT_EQ(pixel(0, 2), (std::vector<int> { 0, 0, 0, 0 }));
}
