#pragma once

#include <memory>

#include "zentavo/foundation/Result.h"
#include "zentavo/websocket/OpenSslLibrary.h"
#include "zentavo/websocket/WebSocketClient.h"
#include "zentavo/websocket/WebSocketServer.h"

namespace zentavo::websocket {

/// What the connections of one side have in common: versions, whom to trust, which certificate to show. TLS 1.2 and
/// later. Any thread.
class TLSContext {
public:
    using Made = Result<std::shared_ptr<TLSContext>>;

    /// The system's authorities are read once in a process, and not for each connection on the thread that all share; a
    /// file that the host names may change, and is read each time. I/O thread.
    static Made client(const ClientOptions& options);
    static Made server(const ServerOptions& options);

    const OpenSslLibrary& library() const noexcept { return library_; }
    SSL_CTX* handle() const noexcept { return handle_.get(); }

private:
    TLSContext(const OpenSslLibrary& library, const SSL_METHOD* method);
    static Made make(decltype(OpenSslLibrary::TLS_client_method) OpenSslLibrary::*method);
    static Made makeClient(const ClientOptions& options);
    /// What a call of OpenSSL that failed said about it.
    Error error(const char* what) const;

    const OpenSslLibrary& library_;
    const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> handle_;
};

} // namespace zentavo::websocket
