#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/socketio/EnginePacket.h"
#include "zentavo/socketio/Limits.h"

namespace zentavo::socketio {

/// The numbers are those of the wire. On it binary events and acknowledgements have types of their own; here they are
/// events and acknowledgements with attachments.
enum class PacketType : std::uint8_t { connect = 0, disconnect = 1, event = 2, acknowledgement = 3, connectError = 4 };

struct Packet {
    PacketType type = PacketType::event;
    std::string space = "/"; ///< the namespace
    std::optional<std::uint64_t> id;
    /// Of an event a list that begins with its name, of an acknowledgement a list, of `connect` a map or null.
    Value data;
    std::vector<std::string> attachments;
    /// What was read, attachments included; 0 in a packet to be written.
    std::size_t bytes = 0;
};

/// The packet as frames: its text, then one for each attachment. Refused: what JSON cannot say, more attachments than
/// `limits` has, and placeholders for attachments that are not there.
ZENTAVO_EXPORT Result<std::vector<EngineFrame>> writePacket(Packet packet, const Limits& limits = {});

/// The number of the attachment that `value` stands for; none when it is no placeholder.
ZENTAVO_EXPORT std::optional<std::int64_t> placeholderNumber(const Value& value) noexcept;
/// Whether every placeholder inside `value` stands for one of `count` attachments.
ZENTAVO_EXPORT bool placeholdersFit(const Value& value, std::size_t count) noexcept;
/// "connect", "disconnect" and their like: they are said by this library and cannot be sent.
ZENTAVO_EXPORT bool isReserved(std::string_view event) noexcept;
/// A namespace as it travels: with a slash in front. None for one that cannot travel.
ZENTAVO_EXPORT std::optional<std::string> namespaceName(std::string_view text);

} // namespace zentavo::socketio
