#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/Headers.h"

namespace zentavo::socketio {

enum class WebSocketSent {
    taken,
    full, ///< nothing was taken; `onDrain` follows
    closed,
};

/// An open or opening connection. Releasing it ends it with a goodbye after what was taken; no event comes any more,
/// also when it is released inside an event.
class ZENTAVO_EXPORT WebSocketConnection {
public:
    virtual ~WebSocketConnection() = default;
    virtual WebSocketSent send(std::string_view content, bool binary) = 0;
    /// Bytes that were taken and wait to leave; any thread. More than none right after a `send` also where the network
    /// is idle: who asks whether something can leave at once compares with a small amount. A connector that cannot tell
    /// leaves it at 0.
    virtual std::size_t queued() const { return 0; }
};

/// Called on the queue, one at a time; views hold during the call. `onClose` is the last, and comes also when the
/// connection never opened; `code` is WebSocket's, `status` that of an HTTP answer that refused it, else 0.
struct WebSocketEvents {
    std::function<void(const std::vector<platform::Header>& headers)> onOpen;
    std::function<void(std::string_view content, bool binary)> onMessage;
    std::function<void()> onDrain;
    std::function<void(int code, const std::string& reason, int status)> onClose;
};

struct WebSocketRequest {
    std::string url;
    platform::Headers headers;
    std::size_t maximumMessage = 0;
    /// From the start to an open connection.
    std::chrono::milliseconds timeout{20'000};
};

/// Makes WebSocket connections, as `platform::URLSession` makes HTTP requests. A host brings one of its own where
/// proxies or certificates need care; tests bring a scripted one.
class ZENTAVO_EXPORT WebSocketConnector {
public:
    virtual ~WebSocketConnector() = default;
    /// Returns at once; never calls an event before it has returned.
    virtual std::unique_ptr<WebSocketConnection> open(const WebSocketRequest& request, WebSocketEvents events,
                                                      std::shared_ptr<platform::DispatchQueue> queue) = 0;
};

/// The connector that stands on zentavo/websocket.
ZENTAVO_EXPORT std::shared_ptr<WebSocketConnector> defaultWebSocketConnector();

} // namespace zentavo::socketio
