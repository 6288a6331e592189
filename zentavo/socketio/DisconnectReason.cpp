#include "zentavo/socketio/DisconnectReason.h"

namespace zentavo::socketio {

const char* text(DisconnectReason reason) noexcept {
    switch (reason) {
    case DisconnectReason::serverDisconnect:
        return "io server disconnect";
    case DisconnectReason::clientDisconnect:
        return "io client disconnect";
    case DisconnectReason::pingTimeout:
        return "ping timeout";
    case DisconnectReason::transportClose:
        return "transport close";
    case DisconnectReason::transportError:
        return "transport error";
    case DisconnectReason::parseError:
        break;
    }
    return "parse error";
}

} // namespace zentavo::socketio
