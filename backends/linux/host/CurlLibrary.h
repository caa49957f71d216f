#pragma once

#include "platform/foundation/Result.h"

// Its checks do not see through a table, and only its older options are known to every version that may be installed.
#define CURL_DISABLE_TYPECHECK
#define CURL_DISABLE_DEPRECATION
#include <curl/curl.h>

namespace backends {

// The functions of curl, by their own names. They are called through this table because the library is loaded late.
struct CurlLibrary {
    // The first time in a process it sets the library up. Any thread, but one at a time.
    static platform::Result<CurlLibrary> load();

#define PANEWELD_CURL_FUNCTIONS(function)                                                                              \
    function(curl_global_init);                                                                                        \
    function(curl_easy_init);                                                                                          \
    function(curl_easy_cleanup);                                                                                       \
    function(curl_easy_setopt);                                                                                        \
    function(curl_easy_perform);                                                                                       \
    function(curl_easy_getinfo);                                                                                       \
    function(curl_easy_strerror)

#define PANEWELD_DECLARE(name) decltype(&::name) name = nullptr
    PANEWELD_CURL_FUNCTIONS(PANEWELD_DECLARE);
#undef PANEWELD_DECLARE
};

} // namespace backends
