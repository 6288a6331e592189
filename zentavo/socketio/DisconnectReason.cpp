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

std::optional<DisconnectReason> disconnectReason(std::string_view wanted) noexcept {
    for (int i = 0; i <= static_cast<int>(DisconnectReason::parseError); ++i) {
        if (wanted == text(static_cast<DisconnectReason>(i))) {
            return static_cast<DisconnectReason>(i);
        }
    }
    return std::nullopt;
}

} // namespace zentavo::socketio
