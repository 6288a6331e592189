#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::socketio {

/// What a server says when a connection begins.
struct EngineHandshake {
    std::string sid;
    /// The connection may go over to WebSocket.
    bool offersWebSocket = false;
    std::chrono::milliseconds pingInterval{25'000};
    std::chrono::milliseconds pingTimeout{20'000};
    /// The most bytes that the server takes at once; 0 when it does not say.
    std::size_t maxPayload = 0;
};

/// Reads the data of an open packet. Times beyond a day count as a day; upgrades that nobody knows are passed over.
ZENTAVO_EXPORT Result<EngineHandshake> readEngineHandshake(std::string_view data);

} // namespace zentavo::socketio
