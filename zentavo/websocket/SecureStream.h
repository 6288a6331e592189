#pragma once

#include <array>
#include <functional>
#include <string>

#include "zentavo/websocket/Stream.h"
#include "zentavo/websocket/TLSEngine.h"

namespace zentavo::websocket {

/// A TCP connection under TLS.
class SecureStream final : public Stream {
public:
    SecureStream(asio::ip::tcp::socket socket, std::unique_ptr<TLSEngine> engine);

    void read(std::span<char> into, std::shared_ptr<StreamEvents> events) override;
    void write(std::string_view bytes, std::shared_ptr<StreamEvents> events) override;
    std::size_t writeNow(std::string_view) override { return 0; }
    /// Before anything else. The stream lives until `done`, which is not called before this has returned.
    void handshake(std::function<void(const asio::error_code&)> done);

private:
    /// Calls `then` when the network brought something for the engine, or an error.
    template <class Then>
    void receive(Then then);
    void shakeHands(std::function<void(const asio::error_code&)> done);
    void takeIn(std::span<char> into, std::shared_ptr<StreamEvents> events);
    /// Sends what the engine has to say, if it is not being sent already; `holder` keeps the stream until then.
    void send(const std::shared_ptr<StreamEvents>& holder);

    const std::unique_ptr<TLSEngine> engine_;
    std::array<char, 17 * 1024> input_; ///< a record and its head
    std::string output_;                ///< being sent
    bool sending_ = false;
    std::shared_ptr<StreamEvents> writer_; ///< to be told when all is sent
    std::size_t written_ = 0;              ///< what it wrote
};

} // namespace zentavo::websocket
