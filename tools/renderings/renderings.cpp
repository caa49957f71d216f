// Renders the first page of a PDF at several sizes, into one file that a program can read without knowing PDF, or draws
// it anew as SVG, which icon themes know.
//
//   paneweld-renderings PDF OUTPUT SIZE...
//   paneweld-renderings PDF OUTPUT.svg
//
// The file: "PWRN", the number of pictures, and for each its width, its height and its pixels row by row, four bytes
// each: alpha, red, green, blue, not multiplied. All numbers have 32 bits, the highest byte first.

#include <algorithm>
#include <cairo-svg.h>
#include <cairo.h>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <poppler.h>
#include <string>
#include <vector>

namespace {

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

void append32(std::string& bytes, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(number >> shift & 0xFF));
}

// The picture fills the square as far as its proportions allow, in the middle.
std::string render(PopplerPage* page, int size)
{
    double width = 0, height = 0;
    poppler_page_get_size(page, &width, &height);
    auto* const surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size);
    auto* const context = cairo_create(surface);
    double const scale = size / std::max(width, height);
    cairo_translate(context, (size - width * scale) / 2, (size - height * scale) / 2);
    cairo_scale(context, scale, scale);
    poppler_page_render(page, context);
    cairo_destroy(context);
    cairo_surface_flush(surface);

    std::string bytes;
    append32(bytes, static_cast<std::uint32_t>(size));
    append32(bytes, static_cast<std::uint32_t>(size));
    auto const* const data = cairo_image_surface_get_data(surface);
    int const stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; y < size; ++y) {
        auto const* const row = reinterpret_cast<std::uint32_t const*>(data + y * stride);
        for (int x = 0; x < size; ++x) {
            auto const pixel = row[x];
            auto const alpha = pixel >> 24;
            std::uint32_t plain = alpha << 24;
            for (int shift = 16; alpha != 0 && shift >= 0; shift -= 8)
                plain |= std::min<std::uint32_t>(255, ((pixel >> shift & 0xFF) * 255 + alpha / 2) / alpha) << shift;
            append32(bytes, plain);
        }
    }
    cairo_surface_destroy(surface);
    return bytes;
}

bool drawSVG(PopplerPage* page, char const* path)
{
    double width = 0, height = 0;
    poppler_page_get_size(page, &width, &height);
    auto* const surface = cairo_svg_surface_create(path, width, height);
    cairo_svg_surface_set_document_unit(surface, CAIRO_SVG_UNIT_PX);
    auto* const context = cairo_create(surface);
    // As on paper: a page that is drawn for the screen would become a picture of pixels.
    poppler_page_render_for_printing(page, context);
    cairo_destroy(context);
    cairo_surface_finish(surface);
    bool const isDrawn = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    return isDrawn;
}

int fail(std::string const& reason)
{
    std::cerr << "paneweld-renderings: " << reason << "\n";
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    bool const wantsSVG = argc == 3 && std::string(argv[2]).ends_with(".svg");
    if (argc < 4 && !wantsSVG)
        return fail("usage: paneweld-renderings PDF OUTPUT SIZE... | PDF OUTPUT.svg");
    GError* error = nullptr;
    auto const address = "file://" + std::filesystem::absolute(argv[1]).string();
    std::unique_ptr<PopplerDocument, Unref> const document(
        poppler_document_new_from_file(address.c_str(), nullptr, &error));
    if (!document)
        return fail(std::string("cannot read ") + argv[1] + ": " + error->message);
    std::unique_ptr<PopplerPage, Unref> const page(poppler_document_get_page(document.get(), 0));
    if (!page)
        return fail(std::string(argv[1]) + " has no page");

    if (wantsSVG)
        return drawSVG(page.get(), argv[2]) ? 0 : fail(std::string("cannot write ") + argv[2]);

    std::string bytes = "PWRN";
    append32(bytes, static_cast<std::uint32_t>(argc - 3));
    for (int i = 3; i < argc; ++i) {
        int const size = std::atoi(argv[i]);
        constexpr int largest = 1024;
        if (size < 1 || size > largest)
            return fail(std::string("no size: ") + argv[i]);
        bytes += render(page.get(), size);
    }
    std::ofstream output(argv[2], std::ios::binary);
    output << bytes;
    output.close();
    return output ? 0 : fail(std::string("cannot write ") + argv[2]);
}
