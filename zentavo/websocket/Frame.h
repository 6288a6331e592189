#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "zentavo/websocket/CloseCode.h"

namespace zentavo::websocket {

/// Which end of a connection: a client masks what it sends, a server must not.
enum class Role : std::uint8_t { client, server };

enum class Opcode : std::uint8_t { continuation = 0, text = 1, binary = 2, close = 8, ping = 9, pong = 10 };

enum class MessageKind : std::uint8_t { text, binary };

constexpr bool isControl(Opcode opcode) noexcept { return (static_cast<unsigned>(opcode) & 8U) != 0; }

/// The most that a control frame carries, in bytes.
inline constexpr std::size_t maximumControlPayload = 125;
/// The longest frame header: 2 bytes, 8 of length, 4 of mask.
inline constexpr std::size_t maximumFrameHeader = 14;

/// The four bytes of a mask in the order in which they travel.
using MaskKey = std::array<std::uint8_t, 4>;

struct FrameHeader {
    bool final = true;
    /// The first reserved bit: the message is compressed.
    bool compressed = false;
    Opcode opcode = Opcode::binary;
    std::uint64_t length = 0;
};

/// What the peer did wrong: the code that we close with, and a sentence for the log.
struct Violation {
    CloseCode code = CloseCode::protocolError;
    const char* reason = "";
};

} // namespace zentavo::websocket
