#pragma once

#include <memory>
#include <optional>

#include "zentavo/foundation/Value.h"

namespace zentavo::socketio {
class SocketIOClient;
}

namespace zentavo {

/// Where the connection of a later delivery in real time will be held. Nothing makes one yet, and nothing opens a socket.
class SocketIOManager {
public:
    std::shared_ptr<socketio::SocketIOClient> mSocket;
    std::optional<Map> connectParam;
};

} // namespace zentavo
