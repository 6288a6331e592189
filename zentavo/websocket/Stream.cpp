#include "zentavo/websocket/Stream.h"

#include <utility>

namespace zentavo::websocket {

Stream::Stream(asio::ip::tcp::socket socket) : socket_(std::move(socket)) {
    asio::error_code ignored;
    socket_.set_option(asio::ip::tcp::no_delay(true), ignored);
}

void Stream::shutdown() {
    asio::error_code ignored;
    socket_.shutdown(asio::ip::tcp::socket::shutdown_send, ignored);
}

void Stream::close() {
    asio::error_code ignored;
    socket_.close(ignored);
}

} // namespace zentavo::websocket
