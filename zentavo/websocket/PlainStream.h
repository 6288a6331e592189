#pragma once

#include "zentavo/websocket/Stream.h"

namespace zentavo::websocket {

/// A TCP connection as it is.
class PlainStream final : public Stream {
public:
    explicit PlainStream(asio::ip::tcp::socket socket);

    void read(std::span<char> into, std::shared_ptr<StreamEvents> events) override;
    void write(std::string_view bytes, std::shared_ptr<StreamEvents> events) override;
    std::size_t writeNow(std::string_view bytes) override;
};

} // namespace zentavo::websocket
