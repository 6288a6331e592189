#include "tests/websocket/conformance/RawDeflate.h"

#include <algorithm>
#include <array>

namespace zentavo::websocket::conformance {
namespace {

constexpr std::string_view tail("\x00\x00\xFF\xFF", 4);

Bytef* bytes(const char* text) { return reinterpret_cast<Bytef*>(const_cast<char*>(text)); }

} // namespace

RawDeflater::RawDeflater(int windowBits, bool takeover) : takeover_(takeover) {
    // zlib has no raw window of 8 bits; what it makes with 9 stays within one.
    deflateInit2(&stream_, 6, Z_DEFLATED, -std::max(windowBits, 9), 8, Z_DEFAULT_STRATEGY);
}

RawDeflater::~RawDeflater() { deflateEnd(&stream_); }

std::string RawDeflater::blocks(std::string_view text, int flush) {
    std::string out;
    std::array<char, 8192> buffer;
    stream_.next_in = bytes(text.data());
    stream_.avail_in = static_cast<uInt>(text.size());
    do {
        stream_.next_out = bytes(buffer.data());
        stream_.avail_out = buffer.size();
        deflate(&stream_, flush);
        out.append(buffer.data(), buffer.size() - stream_.avail_out);
    } while (stream_.avail_out == 0);
    if (flush == Z_FINISH) {
        deflateReset(&stream_);
    }
    return out;
}

std::string RawDeflater::message(std::string_view message) {
    std::string payload = message.empty() ? std::string(1, '\0') : blocks(message, Z_SYNC_FLUSH);
    if (payload.ends_with(tail)) {
        payload.resize(payload.size() - tail.size());
    }
    if (!takeover_) {
        deflateReset(&stream_);
    }
    return payload;
}

RawInflater::RawInflater(int windowBits, bool takeover) : takeover_(takeover) { inflateInit2(&stream_, -windowBits); }

RawInflater::~RawInflater() { inflateEnd(&stream_); }

std::optional<std::string> RawInflater::message(std::string_view payload) {
    const std::string input = std::string(payload) + std::string(tail);
    std::string out;
    std::array<char, 8192> buffer;
    stream_.next_in = bytes(input.data());
    stream_.avail_in = static_cast<uInt>(input.size());
    do {
        stream_.next_out = bytes(buffer.data());
        stream_.avail_out = buffer.size();
        const int code = inflate(&stream_, Z_SYNC_FLUSH);
        if (code != Z_OK && code != Z_BUF_ERROR) {
            return std::nullopt;
        }
        out.append(buffer.data(), buffer.size() - stream_.avail_out);
    } while (stream_.avail_out == 0);
    if (!takeover_) {
        inflateReset(&stream_);
    }
    return stream_.avail_in == 0 ? std::optional(out) : std::nullopt;
}

} // namespace zentavo::websocket::conformance
