#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"

/// Engine.IO 4, the layer below: packets, and the bodies in which HTTP polling carries several of them.
namespace zentavo::socketio {

enum class EnginePacketType : std::uint8_t { open, close, ping, pong, message, upgrade, noop };

/// A packet as it travels in one WebSocket message. Text begins with the digit of its type; binary is always a message
/// and has none.
struct EngineFrame {
    std::string bytes;
    bool binary = false;
    /// Whatever must live until the frame is on its way.
    std::shared_ptr<const void> held = nullptr;
};

ZENTAVO_EXPORT EngineFrame engineFrame(EnginePacketType type, std::string_view data = {});

/// A packet that was read; `data` looks into what it was read from.
struct EnginePacket {
    EnginePacketType type = EnginePacketType::noop;
    std::string_view data;
    bool binary = false;
};

/// Reads the text of a WebSocket message.
ZENTAVO_EXPORT Result<EnginePacket> readEnginePacket(std::string_view text);

/// How many bytes `frame` takes in a polling body, the separator before it not counted.
ZENTAVO_EXPORT std::size_t sizeInPayload(const EngineFrame& frame) noexcept;
/// Appends `frame` to a polling body, behind a separator unless it is the first.
ZENTAVO_EXPORT void appendToPayload(std::string& body, const EngineFrame& frame);

/// Reads a polling body packet by packet. `body` must outlive the reader.
class ZENTAVO_EXPORT PayloadReader {
public:
    explicit PayloadReader(std::string_view body) : rest_(body) {}

    /// The next packet, none at the end. Its data hold until the next call. A body without any packet is an error, and
    /// after an error nothing more is read.
    Result<std::optional<EnginePacket>> next();

private:
    std::string_view rest_;
    std::string decoded_;
    bool ended_ = false;
};

} // namespace zentavo::socketio
