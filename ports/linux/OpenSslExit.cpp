#include "ports/linux/OpenSslExit.h"

#include <dlfcn.h>
#include <openssl/crypto.h>

namespace zentavo::linux_port {

// OpenSSL's exit handler would be registered while libcurl, or we, initialise it. In a process that exits at that moment
// it would run before ours has stopped the network thread, and take away what that thread is using.
void keepOpenSslUntilTheEnd(void* library) {
    if (void* found = dlsym(library, "OPENSSL_init_crypto")) {
        reinterpret_cast<decltype(&OPENSSL_init_crypto)>(found)(OPENSSL_INIT_NO_ATEXIT, nullptr);
    }
}

} // namespace zentavo::linux_port
