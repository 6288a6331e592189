#include "zentavo/websocket/FrameWriter.h"

#include <algorithm>
#include <cstring>

#include "zentavo/foundation/UTF8.h"
#include "zentavo/websocket/Masking.h"

namespace zentavo::websocket {
namespace {

// Large payloads are copied and masked in parts that stay in the first cache between the two.
constexpr std::size_t stride = 16384;

std::size_t writeHead(char* head, const FrameHeader& header, const std::optional<MaskKey>& key) {
    head[0] = static_cast<char>((header.final ? 0x80U : 0U) | (header.compressed ? 0x40U : 0U) |
                                static_cast<unsigned>(header.opcode));
    const unsigned maskBit = key ? 0x80U : 0U;
    std::size_t size = 2;
    if (header.length < 126) {
        head[1] = static_cast<char>(maskBit | static_cast<unsigned>(header.length));
    } else {
        const std::size_t bytes = header.length < 65536 ? 2 : 8;
        head[1] = static_cast<char>(maskBit | (bytes == 2 ? 126U : 127U));
        for (std::size_t i = 0; i < bytes; ++i) {
            head[size++] = static_cast<char>(header.length >> (8 * (bytes - 1 - i)) & 0xFFU);
        }
    }
    if (key) {
        std::memcpy(head + size, key->data(), key->size());
        size += key->size();
    }
    return size;
}

} // namespace

void appendFrame(std::string& out, FrameHeader header, std::string_view payload, std::optional<MaskKey> key) {
    header.length = payload.size();
    char head[maximumFrameHeader];
    const std::size_t headSize = writeHead(head, header, key);
    const std::size_t needed = out.size() + headSize + payload.size();
    if (needed > out.capacity()) {
        out.reserve(std::max(needed, out.capacity() * 2));
    }
    out.append(head, headSize);
    if (!key) {
        out.append(payload);
        return;
    }
    for (std::size_t at = 0; at < payload.size(); at += stride) {
        const std::string_view part = payload.substr(at, stride);
        out.append(part);
        applyMask({out.data() + out.size() - part.size(), part.size()}, *key, at);
    }
}

std::string closePayload(CloseCode code, std::string_view reason) {
    if (code == CloseCode::noStatus) {
        return {};
    }
    const auto number = static_cast<unsigned>(code);
    std::string payload{static_cast<char>(number >> 8U), static_cast<char>(number & 0xFFU)};
    std::size_t length = 0;
    while (length < reason.size()) {
        const std::size_t character = utf8::characterLength(reason, length);
        if (character == 0 || 2 + length + character > maximumControlPayload) {
            break;
        }
        length += character;
    }
    payload.append(reason.substr(0, length));
    return payload;
}

} // namespace zentavo::websocket
