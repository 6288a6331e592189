#include "zentavo/websocket/Stream.h"

#include <utility>

#include <asio/buffer.hpp>
#include <asio/ip/address.hpp>
#include <asio/ssl/host_name_verification.hpp>
#include <asio/ssl/stream.hpp>

namespace zentavo::websocket {
namespace {

using Socket = asio::ip::tcp::socket;
using Secure = asio::ssl::stream<Socket>;

Socket& socketOf(Socket& socket) { return socket; }
Socket& socketOf(Secure& secure) { return secure.next_layer(); }

template <class Lower>
class StreamOver : public Stream {
public:
    template <class... Arguments>
    explicit StreamOver(Arguments&&... arguments) : lower_(std::forward<Arguments>(arguments)...) {
        asio::error_code ignored;
        socketOf(lower_).set_option(asio::ip::tcp::no_delay(true), ignored);
    }

    void read(std::span<char> into, std::shared_ptr<StreamEvents> events) override {
        lower_.async_read_some(asio::buffer(into.data(), into.size()),
                               [events = std::move(events)](const asio::error_code& error, std::size_t size) {
                                   events->onRead(error, size);
                               });
    }
    void write(std::string_view bytes, std::shared_ptr<StreamEvents> events) override {
        lower_.async_write_some(asio::buffer(bytes),
                                [events = std::move(events)](const asio::error_code& error, std::size_t size) {
                                    events->onWritten(error, size);
                                });
    }
    std::size_t writeNow(std::string_view bytes) override {
        if constexpr (std::is_same_v<Lower, Socket>) {
            asio::error_code error;
            if (!lower_.non_blocking()) {
                lower_.non_blocking(true, error);
            }
            const std::size_t size = error ? 0 : lower_.write_some(asio::buffer(bytes), error);
            return error ? 0 : size;
        } else {
            static_cast<void>(bytes);
            return 0;
        }
    }
    void shutdown() override {
        asio::error_code ignored;
        socketOf(lower_).shutdown(Socket::shutdown_send, ignored);
    }
    void handshake(std::function<void(const asio::error_code&)> done) override { done({}); }
    void close() override {
        asio::error_code ignored;
        socketOf(lower_).close(ignored);
    }

    Lower& lower() { return lower_; }

private:
    Lower lower_;
};

/// A stream under TLS holds on to the context that it was made with.
class SecureStream final : public StreamOver<Secure> {
public:
    SecureStream(Socket socket, std::shared_ptr<asio::ssl::context> context, Secure::handshake_type side)
        : StreamOver<Secure>(std::move(socket), *context), context_(std::move(context)), side_(side) {}

    void handshake(std::function<void(const asio::error_code&)> done) override {
        lower().async_handshake(side_, std::move(done));
    }

private:
    const std::shared_ptr<asio::ssl::context> context_;
    const Secure::handshake_type side_;
};

} // namespace

std::unique_ptr<Stream> Stream::plain(Socket socket) { return std::make_unique<StreamOver<Socket>>(std::move(socket)); }

std::unique_ptr<Stream> Stream::secureClient(Socket socket, std::shared_ptr<asio::ssl::context> context,
                                             const std::string& host) {
    auto stream = std::make_unique<SecureStream>(std::move(socket), std::move(context), Secure::client);
    asio::error_code notNumeric;
    asio::ip::make_address(host, notNumeric);
    if (notNumeric) {
        // What OpenSSL's macro for this does, without its old-style cast.
        SSL_ctrl(stream->lower().native_handle(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name,
                 const_cast<char*>(host.c_str()));
    }
    asio::error_code ignored;
    stream->lower().set_verify_callback(asio::ssl::host_name_verification(host), ignored);
    return stream;
}

std::unique_ptr<Stream> Stream::secureServer(Socket socket, std::shared_ptr<asio::ssl::context> context) {
    return std::make_unique<SecureStream>(std::move(socket), std::move(context), Secure::server);
}

} // namespace zentavo::websocket
