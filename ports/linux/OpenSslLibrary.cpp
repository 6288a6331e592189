#include "ports/linux/OpenSslLibrary.h"

#include <dlfcn.h>

#include "ports/linux/OpenSslExit.h"

namespace zentavo::linux_port {
namespace {

const OpenSslLibrary* load() {
    // Never closed: a key may be used while the process ends.
    void* handle = ::dlopen("libcrypto.so.3", RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
        return nullptr;
    }
    keepOpenSslUntilTheEnd(handle);
    static OpenSslLibrary library;
#define ZENTAVO_OPENSSL_LOOK_UP(name)                                                                                  \
    library.name = reinterpret_cast<decltype(library.name)>(::dlsym(handle, #name));                                   \
    if (library.name == nullptr) {                                                                                     \
        return nullptr;                                                                                                \
    }
    ZENTAVO_OPENSSL_FUNCTIONS(ZENTAVO_OPENSSL_LOOK_UP)
#undef ZENTAVO_OPENSSL_LOOK_UP
    return &library;
}

} // namespace

const OpenSslLibrary* OpenSslLibrary::shared() {
    static const OpenSslLibrary* const library = load();
    return library;
}

} // namespace zentavo::linux_port
