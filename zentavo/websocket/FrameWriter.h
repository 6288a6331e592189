#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/websocket/Frame.h"

namespace zentavo::websocket {

/// Appends one frame to `out`. `header.length` is taken from `payload`; with a key the payload is masked.
ZENTAVO_EXPORT void appendFrame(std::string& out, FrameHeader header, std::string_view payload,
                                std::optional<MaskKey> key);

/// The payload of a close frame: empty for `noStatus`; `reason` is cut, between characters, to what a frame holds.
ZENTAVO_EXPORT std::string closePayload(CloseCode code, std::string_view reason);

} // namespace zentavo::websocket
