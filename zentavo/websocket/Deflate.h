#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"

/// permessage-deflate (RFC 7692): raw deflate, one message after the other, each without the four bytes that every
/// flushed block ends with.
namespace zentavo::websocket {

/// Compresses what one end sends. One thread at a time. Memory by window: about 256 KiB at 15 bits, made with the first
/// message.
class ZENTAVO_EXPORT Deflater {
public:
    /// `windowBits` 8 to 15. `takeover`: messages may refer to earlier ones. `level` 1 to 9.
    Deflater(int windowBits, bool takeover, int level);
    ~Deflater();
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    /// The compressed payload of `message`; the view holds until the next call. Empty when memory ran out: send the
    /// message as it is.
    std::string_view compress(std::string_view message);

private:
    struct State;
    const int windowBits_;
    const bool takeover_;
    const int level_;
    std::unique_ptr<State> state_;
    std::string out_;
};

/// Expands what the other end sends. One thread at a time.
class ZENTAVO_EXPORT Inflater {
public:
    enum class Outcome { ok, corrupt, tooLarge };

    Inflater(int windowBits, bool takeover);
    ~Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Appends to `out` what the next part of a message expands to. `tooLarge` as soon as `out` would exceed `limit`
    /// bytes, however small the part. `last`: the message ends with this part.
    Outcome expand(std::string_view part, bool last, std::string& out, std::size_t limit);

    /// Bytes of room that were made for output so far, used or not: a measure of the work that a peer has caused. In
    /// proportion to what came and what it expanded to.
    std::size_t prepared() const noexcept { return prepared_; }

private:
    struct State;
    Outcome run(std::string_view part, std::string& out, std::size_t limit);
    std::size_t makeRoom(std::string& out, std::size_t written, std::size_t wanted, std::size_t limit);

    const int windowBits_;
    const bool takeover_;
    std::unique_ptr<State> state_;
    std::size_t prepared_ = 0;
};

} // namespace zentavo::websocket
