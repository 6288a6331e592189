#pragma once

#include <asio/ip/tcp.hpp>

#include "zentavo/websocket/ClientHandshake.h"
#include "zentavo/websocket/Link.h"
#include "zentavo/websocket/WebSocketClient.h"

namespace zentavo::websocket {

/// Where a URL leads.
struct Address {
    bool secure = false;
    std::string host;
    std::uint16_t port = 0;
    /// As the "Host" field names it.
    std::string authority;
    std::string target;

    static Result<Address> of(std::string_view url);
};

/// The client's end: finds its way to the server and asks it.
class ClientLink final : public Link, public std::enable_shared_from_this<ClientLink> {
public:
    ClientLink(std::shared_ptr<const ClientHandlers> handlers, std::shared_ptr<platform::DispatchQueue> queue,
               Address address, ClientOptions options, ClientHandshake handshake);

    /// Once; any thread.
    void start();

private:
    std::shared_ptr<Link> self() override { return shared_from_this(); }
    void takeHandshake(std::span<char>& input) override;
    void onEnd() override;

    void deliverOpen() override;
    void deliverMessage(MessageKind kind, std::string_view content) override;
    void deliverDrain() override;
    void deliverClose() override;

    void resolve();
    void connect(const asio::ip::tcp::resolver::results_type& addresses);
    void boundAttempt(std::chrono::milliseconds time);
    void askProxy();
    void readProxy();
    void takeProxyAnswer(std::size_t size);
    void secure();
    void greet();
    /// Wraps what happens when an operation of the way to the server has ended: a failure ends the link.
    template <class Then>
    auto step(const char* what, Then then);

    const std::shared_ptr<const ClientHandlers> handlers_;
    const Address address_;
    const ClientOptions asked_;
    ClientHandshake handshake_;
    int status_ = 0;

    asio::ip::tcp::resolver resolver_;
    asio::ip::tcp::socket socket_;
    asio::steady_timer attemptTimer_;
    std::size_t addressesLeft_ = 0; ///< to try after the one that is being tried
    HTTPHeadReader proxyAnswer_;
    std::string proxyBytes_;
};

} // namespace zentavo::websocket
