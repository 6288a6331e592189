#pragma once

#include <cstdint>
#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo::websocket {

/// Why a connection was closed (RFC 6455, section 7.4). Other numbers from 3000 to 4999 belong to applications.
enum class CloseCode : std::uint16_t {
    normal = 1000,
    goingAway = 1001,
    protocolError = 1002,
    unsupportedData = 1003,
    noStatus = 1005, ///< local only: the peer's close frame was empty
    abnormal = 1006, ///< local only: the stream ended without a close frame
    invalidData = 1007,
    policyViolation = 1008,
    tooLarge = 1009,
    missingExtension = 1010,
    internalError = 1011,
    serviceRestart = 1012,
    tryAgainLater = 1013,
    badGateway = 1014,
    tlsFailure = 1015, ///< local only: no secure connection came about
};

/// Whether a close frame may carry `code`; the others are reserved or say something about this end only.
ZENTAVO_EXPORT bool maySend(CloseCode code) noexcept;

/// How a connection ended.
struct Closed {
    CloseCode code = CloseCode::abnormal;
    /// The peer's words, or ours where we failed the connection; UTF-8, a few hundred bytes at most.
    std::string reason;
    /// Both ends said goodbye.
    bool clean = false;
};

} // namespace zentavo::websocket
