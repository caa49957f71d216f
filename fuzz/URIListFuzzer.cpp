#include "backends/linux/x11/URIList.h"

#include <cstdint>

// A list of the addresses that were read reads back as the same.
static void check(std::vector<platform::URL> const& urls)
{
    std::string list;
    for (auto const& url : urls)
        list += url.absoluteString() + "\r\n";
    if (backends::urlsFromURIList(list, "workbench") != urls)
        __builtin_trap();
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(reinterpret_cast<char const*>(data), size);
    check(backends::urlsFromURIList(bytes, "workbench"));
    check(backends::urlsFromNetscapeURL(bytes, "workbench"));
    if (auto const urls = backends::urlsFromMozURL(bytes, "workbench"))
        check(*urls);
    return 0;
}
