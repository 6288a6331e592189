#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"

namespace zentavo::socketio {

enum class DisconnectReason : std::uint8_t {
    serverDisconnect, ///< the server ended this namespace; it is not joined again by itself
    clientDisconnect, ///< `disconnect` was called
    pingTimeout,      ///< the server has been silent for too long
    transportClose,   ///< the connection was closed: the server stopped, or the packet was too large
    transportError,   ///< an exchange failed, or was answered with an error
    parseError,       ///< the server sent what is no packet
};

/// "io server disconnect", "io client disconnect", "ping timeout", "transport close", "transport error", "parse error".
ZENTAVO_EXPORT const char* text(DisconnectReason reason) noexcept;
/// The reason of that text.
ZENTAVO_EXPORT std::optional<DisconnectReason> disconnectReason(std::string_view text) noexcept;

/// How a connection to a namespace ended.
struct Disconnection {
    DisconnectReason reason = DisconnectReason::transportClose;
    /// For people: "WebSocket code 1009: …", "the post was answered with status 413".
    std::string detail;
};

} // namespace zentavo::socketio
