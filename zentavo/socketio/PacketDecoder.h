#pragma once

#include <optional>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/socketio/Limits.h"
#include "zentavo/socketio/Packet.h"

namespace zentavo::socketio {

/// Puts packets together from the messages of one connection. A packet and its attachments may come in different
/// polling answers, so it lives as long as the connection. After an error the connection is of no more use.
class ZENTAVO_EXPORT PacketDecoder {
public:
    explicit PacketDecoder(const Limits& limits) : limits_(limits) {}

    /// The packet that a text message completes; none when attachments must follow.
    Result<std::optional<Packet>> takeText(std::string_view text);
    /// The packet that an attachment completes; none when more must follow.
    Result<std::optional<Packet>> takeBinary(std::string_view bytes);

private:
    const Limits limits_;
    std::optional<Packet> waiting_; ///< for attachments
    std::size_t missing_ = 0;
};

} // namespace zentavo::socketio
