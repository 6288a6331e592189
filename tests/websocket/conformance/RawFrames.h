#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/websocket/Frame.h"

namespace zentavo::websocket::conformance {

/// A frame as it stands on the wire, right or wrong: first byte and payload, and what else a test wants to spoil.
struct RawFrame {
    unsigned first = 0;
    std::string payload;
    enum class Length { shortest, two, eight } length = Length::shortest;
    bool wrongMask = false;

    friend bool operator==(const RawFrame& a, const RawFrame& b) {
        return a.first == b.first && a.payload == b.payload;
    }
};
void PrintTo(const RawFrame& frame, std::ostream* out);

inline RawFrame text(std::string payload) { return {0x81, std::move(payload)}; }
inline RawFrame binary(std::string payload) { return {0x82, std::move(payload)}; }
inline RawFrame ping(std::string payload) { return {0x89, std::move(payload)}; }
inline RawFrame pong(std::string payload) { return {0x8A, std::move(payload)}; }
RawFrame close(unsigned code, std::string_view reason = {});

/// The bytes of `frames` as `sender` puts them on the wire. Written apart from the library, so that the two check each
/// other.
std::string encode(const std::vector<RawFrame>& frames, Role sender);
/// Reads whole frames from `bytes`; what is not a whole frame becomes one of first byte 0.
std::vector<RawFrame> decode(std::string_view bytes, Role sender);
/// The reason of a close frame is for people.
std::vector<RawFrame> withoutReasons(std::vector<RawFrame> frames);

} // namespace zentavo::websocket::conformance
