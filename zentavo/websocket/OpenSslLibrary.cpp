#include "zentavo/websocket/OpenSslLibrary.h"

#include <system_error>

#include <dlfcn.h>

#include "zentavo/websocket/IOThread.h"

namespace zentavo::websocket {

const Result<OpenSslLibrary>& OpenSslLibrary::shared() {
    // Never destroyed, as the I/O thread may outlive every static object.
    static const auto& library = *new Result<OpenSslLibrary>([] {
        auto opened = open("libssl.so.3");
        if (opened) {
            // Nobody may tidy up OpenSSL while the thread can still use it. If the host has started it, it will do so
            // when the process exits: by then the thread has to be stopped.
            opened->OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
            IOThread::stopAtExit(opened->OPENSSL_thread_stop);
        }
        return opened;
    }());
    return library;
}

Result<OpenSslLibrary> OpenSslLibrary::open(const char* file) {
    void* handle = ::dlopen(file, RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = ::dlerror();
        return Error{std::string("there is no TLS without OpenSSL 3: ") + (reason != nullptr ? reason : file)};
    }
    OpenSslLibrary library;
#define ZENTAVO_TLS_LOOK_UP(name)                                                                                      \
    library.name = reinterpret_cast<decltype(library.name)>(::dlsym(handle, #name));                                   \
    if (library.name == nullptr) {                                                                                     \
        return Error{std::string("there is no TLS without OpenSSL 3: ") + file + " has no " #name};                    \
    }
    ZENTAVO_TLS_FUNCTIONS(ZENTAVO_TLS_LOOK_UP)
#undef ZENTAVO_TLS_LOOK_UP
    return library;
}

std::string OpenSslLibrary::firstError() const { return describe(ERR_get_error()); }

std::string OpenSslLibrary::describe(unsigned long error) const {
    if (ERR_GET_LIB(error) == ERR_LIB_SYS) {
        return std::system_category().message(ERR_GET_REASON(error));
    }
    const char* reason = ERR_reason_error_string(error);
    return reason != nullptr ? reason : "OpenSSL gives no reason";
}

} // namespace zentavo::websocket
