#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <zlib.h>

namespace zentavo::websocket::conformance {

/// zlib, used as plainly as can be: the other end of a connection, written apart from the library. One message after
/// the other.
class RawDeflater {
public:
    RawDeflater(int windowBits, bool takeover);
    ~RawDeflater();
    RawDeflater(const RawDeflater&) = delete;
    RawDeflater& operator=(const RawDeflater&) = delete;

    /// The payload of `message`.
    std::string message(std::string_view message);
    /// The blocks of `text` as zlib ends them with `flush`; nothing is cut off.
    std::string blocks(std::string_view text, int flush);

private:
    z_stream stream_{};
    const bool takeover_;
};

class RawInflater {
public:
    RawInflater(int windowBits, bool takeover);
    ~RawInflater();
    RawInflater(const RawInflater&) = delete;
    RawInflater& operator=(const RawInflater&) = delete;

    /// What `payload` expands to; none when it cannot be read with the window and the messages before.
    std::optional<std::string> message(std::string_view payload);

private:
    z_stream stream_{};
    const bool takeover_;
};

} // namespace zentavo::websocket::conformance
