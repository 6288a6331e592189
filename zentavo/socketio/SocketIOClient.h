#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "zentavo/foundation/Export.h"
#include "zentavo/socketio/Event.h"
#include "zentavo/socketio/ManagerOptions.h"

namespace zentavo::socketio {

class Namespace;
class SocketManager;

/// One namespace of a server, made by `SocketManager::socket`. Any thread; no call waits.
///
/// Handlers run on the manager's queue, one at a time, in the order in which things happened. Letting go of the last
/// pointer is allowed at any time, also inside a handler: the namespace is left, and no handler starts any more (one
/// that runs on the queue at that moment may still be running). A socket keeps its manager alive.
class ZENTAVO_EXPORT SocketIOClient {
public:
    SocketIOClient(std::shared_ptr<Namespace> space, std::shared_ptr<SocketManager> manager);
    ~SocketIOClient();
    SocketIOClient(const SocketIOClient&) = delete;
    SocketIOClient& operator=(const SocketIOClient&) = delete;

    const std::string& name() const noexcept;
    const std::shared_ptr<SocketManager>& manager() const noexcept { return manager_; }

    /// Joins the namespace, and joins it again after each reconnection. "connect" or "connect_error" follows.
    void connect();
    /// Leaves it; what was emitted before still goes out. The connection ends with the last namespace.
    void disconnect();
    bool connected() const;
    /// The server's name for this end; another after each reconnection, empty without one.
    std::string id() const;
    /// The server sent what was missed while the connection was lost.
    bool recovered() const;
    /// What the server is told from the next join on.
    void setAuth(Auth auth);

    HandlerId on(std::string_view event, EventHandler handler);
    HandlerId once(std::string_view event, EventHandler handler);
    /// Every event from the server, before its own handlers.
    HandlerId onAny(EventHandler handler);
    /// Every event to the server, when it leaves. Sees those emitted after it was added.
    HandlerId onAnyOutgoing(EventHandler handler);
    /// The same as `on("connect", …)`, `on("disconnect", …)` and `on("connect_error", …)`.
    HandlerId onConnect(std::function<void()> handler);
    HandlerId onDisconnect(std::function<void(const Disconnection&)> handler);
    HandlerId onConnectError(std::function<void(const ConnectError&)> handler);
    /// Takes effect at once, also for the event that is being told.
    void off(HandlerId handler);
    void off(std::string_view event);
    /// All of them, any-handlers included.
    void offAll();

    /// Sends an event; while there is no connection it waits, in order. An error for what cannot be sent: values that
    /// JSON cannot say, too many attachments, an event of the library's own, or too much that waits already.
    Emitted emit(std::string_view event, Arguments arguments = {});
    /// With an acknowledgement. `handler` is called once: with the server's arguments, after `timeout` (0: none;
    /// counted from this call), or when the connection is lost after the event was sent. An event that waits when its
    /// time is over is not sent any more.
    Emitted emit(std::string_view event, Arguments arguments, std::chrono::milliseconds timeout, AckHandler handler);
    Emitted emit(std::string_view event, Arguments arguments, AckHandler handler) {
        return emit(event, std::move(arguments), std::chrono::milliseconds(0), std::move(handler));
    }
    /// Dropped unless it can leave at once, with less than 16 KiB ahead of it: for what is soon out of date.
    Emitted emitVolatile(std::string_view event, Arguments arguments = {});

private:
    const std::shared_ptr<Namespace> space_;
    const std::shared_ptr<SocketManager> manager_;
};

} // namespace zentavo::socketio
