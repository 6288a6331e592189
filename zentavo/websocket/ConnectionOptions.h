#pragma once

#include <chrono>
#include <optional>

#include "zentavo/websocket/Extensions.h"
#include "zentavo/websocket/Session.h"

namespace zentavo::websocket {

/// What clients and servers have in common. A time of 0 means that there is no such bound.
struct ConnectionOptions {
    SessionLimits limits;
    /// None: messages are never compressed.
    std::optional<DeflateOptions> compression;
    /// From an open stream to an open connection.
    std::chrono::milliseconds handshakeTimeout{10'000};
    /// How long the other end has to answer our goodbye once that has left, and after it to end the stream. As long as
    /// what was sent before is still leaving, at least 64 KiB of it have to in each such time.
    std::chrono::milliseconds closeTimeout{5'000};
    /// A ping is sent when nothing has come for so long (and before it is twice as long) …
    std::chrono::milliseconds pingInterval{30'000};
    /// … and the connection is given up when nothing has come for so long after it. Where the network is full there is no
    /// room for a ping: there it is a sign of life, too, that it takes more.
    std::chrono::milliseconds pingTimeout{20'000};
};

} // namespace zentavo::websocket
