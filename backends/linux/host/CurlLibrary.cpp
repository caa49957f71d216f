#include "backends/linux/host/CurlLibrary.h"

#include "backends/linux/host/LateLibrary.h"

#include <string>

namespace backends {

using platform::NSError;

platform::Result<CurlLibrary> CurlLibrary::load()
{
    // Distributions have it with one library for encryption or the other.
    auto library = LateLibrary::load("libcurl.so.4");
    if (!library)
        library = LateLibrary::load("libcurl-gnutls.so.4");
    if (!library)
        return library.error();
    CurlLibrary table;
    char const* missing = nullptr;
#define PANEWELD_FIND(name)                                                                                            \
    if (!library.value().find(#name, table.name))                                                                      \
    missing = #name
    PANEWELD_CURL_FUNCTIONS(PANEWELD_FIND);
#undef PANEWELD_FIND
    if (missing)
        return NSError { "Loader", 2, std::string("libcurl has no ") + missing };
    // Counted by the library: a host that uses it too is not disturbed.
    static auto const result = table.curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
        return NSError { "Loader", 3, table.curl_easy_strerror(result) };
    return table;
}

} // namespace backends
