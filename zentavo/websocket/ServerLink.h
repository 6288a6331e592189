#pragma once

#include <functional>

#include "zentavo/websocket/Link.h"
#include "zentavo/websocket/TLSContext.h"
#include "zentavo/websocket/WebSocketServer.h"

namespace zentavo::websocket {

/// The host of a server, as all its connections see it.
struct ServerHost {
    explicit ServerHost(ServerHandlers itsHandlers) : handlers(std::move(itsHandlers)) {}
    const ServerHandlers handlers;
    /// No handler may start any more.
    std::atomic<bool> gone = false;
};

/// The server's end of one connection.
class ServerLink final : public Link, public ServerConnection, public std::enable_shared_from_this<ServerLink> {
public:
    /// `ended` is called on the I/O thread when nothing more will happen.
    ServerLink(std::shared_ptr<const ServerHost> host, std::shared_ptr<platform::DispatchQueue> queue,
               const ServerOptions& options, std::function<void(const std::shared_ptr<ServerLink>&)> ended);

    /// I/O thread. `tls`: null for a plain connection; not kept.
    void start(asio::ip::tcp::socket socket, const TLSContext* tls);

    Sent send(MessageKind kind, std::string_view content) override { return sendMessage(kind, content); }
    Sent ping(std::string_view content) override { return sendPing(content); }
    void close(CloseCode code, std::string_view reason) override { sayGoodbye(code, reason); }
    std::size_t queued() const override { return waiting(); }
    const ServerRequest& request() const override { return handshake_.request(); }
    const std::string& subprotocol() const override { return agreed().subprotocol; }

private:
    std::shared_ptr<Link> self() override { return shared_from_this(); }
    void takeHandshake(std::span<char>& input) override;
    void onEnd() override { ended_(shared_from_this()); }

    void deliverOpen() override;
    void deliverMessage(MessageKind kind, std::string_view content) override;
    void deliverDrain() override;
    void deliverClose() override;

    /// `handler` of the host, where there is one and it may be called.
    template <class Handler, class... Arguments>
    void call(const Handler& handler, Arguments&&... arguments);
    Verdict ask() const;
    void answer(const Verdict& verdict);

    const std::shared_ptr<const ServerHost> host_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    const std::function<void(const std::shared_ptr<ServerLink>&)> ended_;
    ServerHandshake handshake_;
    bool asked_ = false;
};

} // namespace zentavo::websocket
