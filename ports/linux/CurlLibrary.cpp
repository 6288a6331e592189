#include "ports/linux/CurlLibrary.h"

#include <cstdint>

#include <dlfcn.h>

#include "ports/linux/LoadedPages.h"

namespace zentavo::linux_port {

namespace {

/// Keeps OpenSSL from tidying up when the process exits. Its exit handler would be registered while libcurl is being
/// initialised, so in a process that exits at that moment it would run before ours has stopped the network thread, and
/// take away what that thread is using. Must be OpenSSL's first call; where the host has called it before, the host's
/// own handler stands and this changes nothing.
void keepOpenSslUntilTheEnd(void* handle) {
    using Initialise = int (*)(std::uint64_t options, const void* settings);
    constexpr std::uint64_t noAtExit = 0x00080000;            // OPENSSL_INIT_NO_ATEXIT
    if (void* found = dlsym(handle, "OPENSSL_init_crypto")) { // not there where libcurl uses another TLS library
        reinterpret_cast<Initialise>(found)(noAtExit, nullptr);
    }
}

} // namespace

Result<CurlLibrary> CurlLibrary::open() {
    const LoadedPages before;
    void* handle = dlopen("libcurl.so.4", RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = dlerror();
        return Error{std::string("libcurl cannot be loaded: ") + (reason != nullptr ? reason : "no reason given")};
    }
    CurlLibrary library;
#define ZENTAVO_CURL_LOOK_UP(name)                                                                                     \
    library.name = reinterpret_cast<decltype(library.name)>(dlsym(handle, #name));                                     \
    if (library.name == nullptr) {                                                                                     \
        return Error{"libcurl is too old: it has no " #name};                                                          \
    }
    ZENTAVO_CURL_FUNCTIONS(ZENTAVO_CURL_LOOK_UP)
#undef ZENTAVO_CURL_LOOK_UP
    keepOpenSslUntilTheEnd(handle);
    if (library.curl_global_init(CURL_GLOBAL_ALL) != CURLE_OK) {
        return Error{"libcurl cannot be initialised"};
    }
    before.giveBackNewer();
    return library;
}

} // namespace zentavo::linux_port
