#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include <asio/ip/tcp.hpp>
#include <asio/ssl/context.hpp>

namespace zentavo::websocket {

/// Told on the I/O thread.
class StreamEvents {
public:
    virtual ~StreamEvents() = default;
    virtual void onRead(const asio::error_code& error, std::size_t size) = 0;
    virtual void onWritten(const asio::error_code& error, std::size_t size) = 0;
};

/// A TCP connection, plain or under TLS. I/O thread only. At most one read and one write at a time; each keeps its
/// `StreamEvents` alive until it is told, also after `close`.
class Stream {
public:
    virtual ~Stream() = default;

    virtual void read(std::span<char> into, std::shared_ptr<StreamEvents> events) = 0;
    /// May write less than all.
    virtual void write(std::string_view bytes, std::shared_ptr<StreamEvents> events) = 0;
    /// Writes what goes out without waiting; 0 when that is nothing, or `write` is the only way.
    virtual std::size_t writeNow(std::string_view bytes) = 0;
    /// Ends our direction.
    virtual void shutdown() = 0;
    virtual void close() = 0;

    /// Of TLS, before anything else; a plain stream has none. The stream lives until `done`.
    virtual void handshake(std::function<void(const asio::error_code&)> done) = 0;

    static std::unique_ptr<Stream> plain(asio::ip::tcp::socket socket);
    /// TLS as a client: `host` is named to the server, and must be in its certificate where the context verifies.
    static std::unique_ptr<Stream> secureClient(asio::ip::tcp::socket socket,
                                                std::shared_ptr<asio::ssl::context> context, const std::string& host);
    static std::unique_ptr<Stream> secureServer(asio::ip::tcp::socket socket,
                                                std::shared_ptr<asio::ssl::context> context);
};

} // namespace zentavo::websocket
