#include "ports/linux/CurlLibrary.h"

#include <dlfcn.h>

#include "ports/linux/LoadedPages.h"
#include "ports/linux/OpenSslExit.h"

namespace zentavo::linux_port {

Result<CurlLibrary> CurlLibrary::open() {
    // OpenSSL may be here already; libcurl reads all its tables once.
    const LoadedPages before{"libcrypto.so", "libssl.so"};
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
