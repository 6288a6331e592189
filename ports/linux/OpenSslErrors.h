#pragma once

#include <string>

#include "ports/linux/OpenSslLibrary.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::linux_port {

/// A stretch of calls to OpenSSL. The errors that they leave in the thread's queue are taken away at its end; those that
/// the host had there stay.
class OpenSslErrors {
public:
    explicit OpenSslErrors(const OpenSslLibrary& library) : library_(library) { library_.ERR_set_mark(); }
    ~OpenSslErrors() { library_.ERR_pop_to_mark(); }
    OpenSslErrors(const OpenSslErrors&) = delete;
    OpenSslErrors& operator=(const OpenSslErrors&) = delete;

    /// `what` went wrong, with OpenSSL's reason. To be asked right after a call that failed.
    Error error(const char* what) const {
        const char* reason = library_.ERR_reason_error_string(library_.ERR_peek_last_error());
        return Error{std::string(what) + ": " + (reason != nullptr ? reason : "no reason given")};
    }

private:
    const OpenSslLibrary& library_;
};

} // namespace zentavo::linux_port
