#pragma once

#include <memory>
#include <span>
#include <string_view>

#include <asio/ip/tcp.hpp>

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
    void shutdown();
    void close();

protected:
    explicit Stream(asio::ip::tcp::socket socket);

    asio::ip::tcp::socket socket_;
};

} // namespace zentavo::websocket
