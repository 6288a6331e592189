#include "zentavo/websocket/Handshake.h"

#include "zentavo/foundation/Base64.h"
#include "zentavo/websocket/Sha1.h"

namespace zentavo::websocket {

std::string acceptFor(std::string_view key) {
    return base64::encode(sha1(std::string(key) + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11"));
}

} // namespace zentavo::websocket
