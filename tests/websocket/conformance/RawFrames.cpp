#include "tests/websocket/conformance/RawFrames.h"

#include <algorithm>
#include <ostream>

namespace zentavo::websocket::conformance {
namespace {

constexpr std::string_view key("\x37\xFA\x21\x3D", 4);

std::string masked(std::string payload, std::string_view with) {
    for (std::size_t i = 0; i < payload.size(); ++i) {
        payload[i] = static_cast<char>(payload[i] ^ with[i % 4]);
    }
    return payload;
}

std::string number(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return text;
}

} // namespace

void PrintTo(const RawFrame& frame, std::ostream* out) {
    *out << std::hex << frame.first << std::dec << " [" << frame.payload.size() << "] ";
    for (const char c : frame.payload.substr(0, 40)) {
        if (c >= ' ' && c < 0x7F) {
            *out << c;
        } else {
            *out << "\\x" << std::hex << (static_cast<unsigned>(c) & 0xFF) << std::dec;
        }
    }
}

RawFrame close(unsigned code, std::string_view reason) { return {0x88, number(code, 2) + std::string(reason)}; }

std::string encode(const std::vector<RawFrame>& frames, Role sender) {
    std::string bytes;
    for (const RawFrame& frame : frames) {
        const bool mask = (sender == Role::client) != frame.wrongMask;
        const unsigned bit = mask ? 0x80 : 0;
        const std::size_t size = frame.payload.size();
        bytes += static_cast<char>(frame.first);
        if (frame.length == RawFrame::Length::eight || size > 65535) {
            bytes += static_cast<char>(bit | 127) + number(size, 8);
        } else if (frame.length == RawFrame::Length::two || size > 125) {
            bytes += static_cast<char>(bit | 126) + number(size, 2);
        } else {
            bytes += static_cast<char>(bit | size);
        }
        bytes += mask ? std::string(key) + masked(frame.payload, key) : frame.payload;
    }
    return bytes;
}

std::vector<RawFrame> decode(std::string_view bytes, Role sender) {
    std::vector<RawFrame> frames;
    std::size_t at = 0;
    const auto byte = [&](std::size_t i) { return static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])); };
    while (at < bytes.size()) {
        RawFrame frame;
        const bool mask = sender == Role::client;
        std::size_t head = at + 2;
        if (head > bytes.size() || ((byte(at + 1) & 0x80) != 0) != mask) {
            return frames.push_back({}), frames;
        }
        std::uint64_t length = byte(at + 1) & 0x7F;
        const std::size_t extra = length == 126 ? 2 : length == 127 ? 8 : 0;
        if (head + extra + (mask ? 4 : 0) > bytes.size()) {
            return frames.push_back({}), frames;
        }
        if (extra != 0) {
            length = 0;
            for (std::size_t i = 0; i < extra; ++i) {
                length = length << 8 | byte(head++);
            }
        }
        const std::string_view with = bytes.substr(head, mask ? 4 : 0);
        head += with.size();
        if (length > bytes.size() - head) {
            return frames.push_back({}), frames;
        }
        const std::string payload(bytes.substr(head, length));
        frame.first = static_cast<unsigned>(byte(at));
        frame.payload = mask ? masked(payload, with) : payload;
        frames.push_back(std::move(frame));
        at = head + length;
    }
    return frames;
}

std::vector<RawFrame> withoutReasons(std::vector<RawFrame> frames) {
    for (RawFrame& frame : frames) {
        if (frame.first == 0x88) {
            frame.payload.resize(std::min<std::size_t>(frame.payload.size(), 2));
        }
    }
    return frames;
}

} // namespace zentavo::websocket::conformance
