#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <asio/error_code.hpp>

#include "zentavo/websocket/TLSContext.h"

namespace zentavo::websocket {

/// One end of a TLS connection without the network: what the other end sent goes in, what it shall get comes out. One
/// thread at a time.
class TLSEngine {
public:
    /// As a client: `host` is named to the server, and must be in its certificate where the context verifies.
    TLSEngine(const TLSContext& context, const std::string& host);
    /// As a server.
    explicit TLSEngine(const TLSContext& context);

    enum class Step {
        done,
        needsInput, ///< of the network, and then again
        ended,      ///< the other end sends nothing any more
        failed,     ///< for good; see `error`
    };
    Step handshake();
    /// `size`: how much of `into` was filled, also where that is not all; then the step is `done`. Fails where more waits
    /// to go out than we write: the other end makes TLS answer (a request for new keys does) and takes no answer.
    Step read(std::span<char> into, std::size_t& size);
    /// Takes all of it.
    Step write(std::string_view bytes);
    const asio::error_code& error() const noexcept { return error_; }

    /// What the network brought.
    void receive(std::string_view bytes);
    /// What is to go out to the network, into `bytes`, which was empty. Any call above may lead to some.
    void takeOutput(std::string& bytes);

private:
    TLSEngine(const OpenSslLibrary& library, SSL* handle);
    Step outcome(int result);

    const OpenSslLibrary& library_;
    const std::unique_ptr<SSL, decltype(&SSL_free)> handle_;
    BIO* const input_; ///< `handle_` owns these
    BIO* const output_;
    asio::error_code error_;
};

} // namespace zentavo::websocket
