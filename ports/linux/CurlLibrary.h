#pragma once

// Some of curl's functions are macros that check their arguments; we need the functions themselves.
#define CURL_DISABLE_TYPECHECK
#include <curl/curl.h>

#include "zentavo/foundation/Result.h"

namespace zentavo::linux_port {

#define ZENTAVO_CURL_FUNCTIONS(X)                                                                                      \
    X(curl_global_init)                                                                                                \
    X(curl_easy_init)                                                                                                  \
    X(curl_easy_cleanup)                                                                                               \
    X(curl_easy_setopt)                                                                                                \
    X(curl_easy_getinfo)                                                                                               \
    X(curl_easy_strerror)                                                                                              \
    X(curl_multi_init)                                                                                                 \
    X(curl_multi_cleanup)                                                                                              \
    X(curl_multi_setopt)                                                                                               \
    X(curl_multi_add_handle)                                                                                           \
    X(curl_multi_remove_handle)                                                                                        \
    X(curl_multi_perform)                                                                                              \
    X(curl_multi_info_read)                                                                                            \
    X(curl_multi_poll)                                                                                                 \
    X(curl_share_init)                                                                                                 \
    X(curl_share_cleanup)                                                                                              \
    X(curl_share_setopt)                                                                                               \
    X(curl_slist_append)                                                                                               \
    X(curl_slist_free_all)

/// The functions of libcurl, as members of their own names. The library is opened when the first request is sent and
/// not when the host starts: it brings thirty others with it, several milliseconds and some megabytes.
struct CurlLibrary {
#define ZENTAVO_CURL_MEMBER(name) decltype(&::name) name = nullptr;
    ZENTAVO_CURL_FUNCTIONS(ZENTAVO_CURL_MEMBER)
#undef ZENTAVO_CURL_MEMBER

    /// Opens and initialises the library, which then stays for good. Once, on the network thread.
    static Result<CurlLibrary> open();
};

} // namespace zentavo::linux_port
