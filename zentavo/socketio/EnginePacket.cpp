#include "zentavo/socketio/EnginePacket.h"

#include <span>

#include "zentavo/foundation/Base64.h"

namespace zentavo::socketio {

namespace {
constexpr char separator = '\x1e';
constexpr char binaryMark = 'b';
} // namespace

EngineFrame engineFrame(EnginePacketType type, std::string_view data) {
    EngineFrame frame;
    frame.bytes.reserve(data.size() + 1);
    frame.bytes.push_back(static_cast<char>('0' + static_cast<int>(type)));
    frame.bytes.append(data);
    return frame;
}

Result<EnginePacket> readEnginePacket(std::string_view text) {
    if (text.empty() || text.front() < '0' || text.front() > '6') {
        return Error{"no Engine.IO packet begins like that"};
    }
    return EnginePacket{static_cast<EnginePacketType>(text.front() - '0'), text.substr(1), false};
}

std::size_t sizeInPayload(const EngineFrame& frame) noexcept {
    return frame.binary ? 1 + (frame.bytes.size() + 2) / 3 * 4 : frame.bytes.size();
}

void appendToPayload(std::string& body, const EngineFrame& frame) {
    if (!body.empty()) {
        body.push_back(separator);
    }
    if (!frame.binary) {
        body.append(frame.bytes);
        return;
    }
    body.push_back(binaryMark);
    body.append(base64::encode({reinterpret_cast<const std::uint8_t*>(frame.bytes.data()), frame.bytes.size()}));
}

Result<std::optional<EnginePacket>> PayloadReader::next() {
    if (ended_) {
        return std::optional<EnginePacket>();
    }
    const auto end = rest_.find(separator);
    const auto text = rest_.substr(0, end);
    ended_ = end == std::string_view::npos;
    if (!ended_) {
        rest_.remove_prefix(end + 1);
    }
    if (!text.empty() && text.front() == binaryMark) {
        const auto bytes = base64::decode(text.substr(1));
        if (!bytes) {
            ended_ = true;
            return Error{"a binary packet is not base64"};
        }
        decoded_.assign(reinterpret_cast<const char*>(bytes->data()), bytes->size());
        return std::optional(EnginePacket{EnginePacketType::message, decoded_, true});
    }
    const auto packet = readEnginePacket(text);
    if (!packet) {
        ended_ = true;
        return packet.error();
    }
    return std::optional(*packet);
}

} // namespace zentavo::socketio
