#include "zentavo/websocket/PlainStream.h"

#include <utility>

#include <asio/buffer.hpp>

namespace zentavo::websocket {

PlainStream::PlainStream(asio::ip::tcp::socket socket) : Stream(std::move(socket)) {}

void PlainStream::read(std::span<char> into, std::shared_ptr<StreamEvents> events) {
    socket_.async_read_some(
        asio::buffer(into.data(), into.size()),
        [events = std::move(events)](const asio::error_code& error, std::size_t size) { events->onRead(error, size); });
}

void PlainStream::write(std::string_view bytes, std::shared_ptr<StreamEvents> events) {
    socket_.async_write_some(asio::buffer(bytes),
                             [events = std::move(events)](const asio::error_code& error, std::size_t size) {
                                 events->onWritten(error, size);
                             });
}

std::size_t PlainStream::writeNow(std::string_view bytes) {
    asio::error_code error;
    if (!socket_.non_blocking()) {
        socket_.non_blocking(true, error);
    }
    const std::size_t size = error ? 0 : socket_.write_some(asio::buffer(bytes), error);
    return error ? 0 : size;
}

} // namespace zentavo::websocket
