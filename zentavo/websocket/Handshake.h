#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/websocket/Extensions.h"
#include "zentavo/websocket/HTTPHead.h"

namespace zentavo::websocket {

/// What both ends agreed upon.
struct Handshake {
    /// Empty when none was chosen.
    std::string subprotocol;
    std::optional<DeflateAgreement> compression;
    /// The other end's header fields.
    HeaderFields headers;
};

/// What a server must answer to a client's key.
ZENTAVO_EXPORT std::string acceptFor(std::string_view key);

} // namespace zentavo::websocket
