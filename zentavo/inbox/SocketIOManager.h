#pragma once

#include <memory>
#include <optional>

#include "zentavo/foundation/Value.h"

namespace zentavo {

class SocketIOClient;

/// Where the connection of a later delivery in real time will be held. Nothing makes one yet, and nothing opens a socket.
class SocketIOManager {
public:
    std::shared_ptr<SocketIOClient> mSocket;
    std::optional<Map> connectParam;
};

} // namespace zentavo
