#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "zentavo/foundation/URL.h"
#include "zentavo/platform/Clock.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/Headers.h"
#include "zentavo/platform/Random.h"
#include "zentavo/platform/URLSession.h"
#include "zentavo/socketio/Limits.h"
#include "zentavo/socketio/WebSocketConnector.h"

namespace zentavo::socketio {

enum class TransportKind { polling, webSocket };

/// How a connection is made.
struct EngineOptions {
    std::string path = "/socket.io/";
    /// Added to the query of every request.
    std::vector<QueryItem> query{};
    /// Added to every request.
    platform::Headers headers{};
    /// The first one starts. A connection that starts with polling goes over to WebSocket where both are here.
    std::vector<TransportKind> transports{TransportKind::polling, TransportKind::webSocket};
    bool upgrade = true;
    /// Where the first transport brings no connection about, the next one of `transports` is tried, and so on; the ones
    /// that failed are not gone over to either. The next connection begins with the first again.
    bool tryAllTransports = false;
    /// Cookies that the server sets go along with WebSocket connections too. Those of HTTP are the URL session's
    /// affair.
    bool cookies = true;
    /// From the start to the server's handshake, for each transport that is tried; and from there until a namespace is
    /// joined, the auth provider's time included.
    std::chrono::milliseconds connectTimeout{20'000};
    /// A change to WebSocket that takes longer is given up; polling goes on.
    std::chrono::milliseconds upgradeTimeout{10'000};
    /// How long what was sent before a disconnect may take to leave.
    std::chrono::milliseconds closeTimeout{5'000};
    Limits limits{};
};

/// Who answers the questions to the system. `queue` is serial: everything happens on it, the host's handlers included.
struct Services {
    std::shared_ptr<platform::DispatchQueue> queue;
    std::shared_ptr<platform::Clock> clock;
    std::shared_ptr<platform::Random> random;
    /// Not needed where polling is not among the transports.
    std::shared_ptr<platform::URLSession> urlSession = nullptr;
    std::shared_ptr<WebSocketConnector> webSockets = defaultWebSocketConnector();
};

} // namespace zentavo::socketio
