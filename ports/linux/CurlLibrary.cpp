#include "ports/linux/CurlLibrary.h"

#include <cstdint>
#include <dlfcn.h>

#include "ports/linux/LoadedPages.h"

namespace zentavo::linux_port {

namespace {

/// OpenSSL tidies up in an exit handler of its own. It registers that while libcurl is being initialised, later than we
/// have registered ours, so where the process ends in that very moment it would run first and pull the tables away from
/// under this thread. We ask it to register none; what it holds, the system takes back. Another TLS library has no such
/// function, and one that the host has initialised before us has its handler already, which then runs after ours.
void keepOpenSslUntilTheEnd(void* curl) {
    constexpr std::uint64_t noExitHandler = 0x00080000; // OPENSSL_INIT_NO_ATEXIT
    using Initialise = int (*)(std::uint64_t options, const void* settings);
    if (const auto initialise = reinterpret_cast<Initialise>(dlsym(curl, "OPENSSL_init_crypto"))) {
        initialise(noExitHandler, nullptr);
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
