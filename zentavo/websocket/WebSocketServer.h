#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/websocket/ConnectionOptions.h"
#include "zentavo/websocket/ServerHandshake.h"

namespace zentavo::websocket {

struct ServerOptions : ConnectionOptions {
    /// Further ones wait until one has gone; those handed over are closed.
    std::size_t maximumConnections = 1000;
    /// PEM files; with them the server speaks wss.
    std::string certificateFile;
    std::string keyFile;
};

/// One client of a server. Any thread; may be kept after the connection has ended.
class ZENTAVO_EXPORT ServerConnection {
public:
    virtual ~ServerConnection() = default;

    virtual Sent send(MessageKind kind, std::string_view content) = 0;
    virtual Sent ping(std::string_view content) = 0;
    virtual void close(CloseCode code, std::string_view reason) = 0;
    virtual std::size_t queued() const = 0;
    /// What the client asked for.
    virtual const ServerRequest& request() const = 0;
    /// Empty when none was chosen.
    virtual const std::string& subprotocol() const = 0;
};

/// What a server's host says to a request.
struct Verdict {
    /// 101 opens the connection; others are the status of the refusal.
    int status = 101;
    /// One of those asked for.
    std::string subprotocol;
    /// Further fields of the answer.
    HeaderFields headers;
};

/// Called on the queue that the server was given, one at a time. Any may be empty.
struct ServerHandlers {
    /// The place to look at target, origin and subprotocols. Without it every sound request is taken. A browser that
    /// shows a stranger's page sends that page's origin: check it where a connection can do harm.
    std::function<Verdict(const ServerRequest&)> onRequest;
    std::function<void(const std::shared_ptr<ServerConnection>&)> onOpen;
    std::function<void(const std::shared_ptr<ServerConnection>&, MessageKind, std::string_view)> onMessage;
    std::function<void(const std::shared_ptr<ServerConnection>&)> onDrain;
    /// Once for each connection that was opened.
    std::function<void(const std::shared_ptr<ServerConnection>&, const Closed&)> onClose;
};

/// A small WebSocket server. Any thread. Destroying it stops it and never waits; no handler starts any more.
class ZENTAVO_EXPORT WebSocketServer {
public:
    /// `queue`: as for `WebSocketClient`.
    WebSocketServer(ServerHandlers handlers, ServerOptions options = {},
                    std::shared_ptr<platform::DispatchQueue> queue = nullptr);
    ~WebSocketServer();
    WebSocketServer(const WebSocketServer&) = delete;
    WebSocketServer& operator=(const WebSocketServer&) = delete;

    /// Listens at a numeric address; port 0 takes a free one. The port, or why not. Once, and not
    /// after `stop`; after an error it may be tried again.
    Result<std::uint16_t> listen(const std::string& address, std::uint16_t port);
    /// Serves an open TCP stream as one that came in by `listen`, without need for that: a host so has WebSocket at the
    /// port of its HTTP server. Nothing of the request may have been read. `socket` is a descriptor that the server owns
    /// from now on, unless an error is returned. Beyond `maximumConnections` it is closed at once.
    Result<void> adopt(int socket);
    /// Takes no more connections and says goodbye to those there are.
    void stop();

private:
    class State;
    const std::shared_ptr<State> state_;
};

} // namespace zentavo::websocket
