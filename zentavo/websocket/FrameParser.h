#pragma once

#include <array>
#include <span>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/websocket/Frame.h"

namespace zentavo::websocket {

/// As much of a frame as has arrived. A frame cut by the network comes in several pieces, each as soon as it is there.
struct FramePiece {
    FrameHeader header;
    /// Unmasked; lies in the input.
    std::string_view data;
    /// The first and the last piece of the frame; the header is complete with the first.
    bool begins = false;
    bool ends = false;
};

/// Bytes in, frames out. Keeps at most an incomplete header. Checks what can be told of a frame by itself; the order of
/// frames is `MessageAssembler`'s.
class ZENTAVO_EXPORT FrameParser {
public:
    enum class Step { needMore, piece, violation };

    /// `reader` is the end that reads. `compression`: the first reserved bit has been agreed upon.
    FrameParser(Role reader, bool compression) noexcept : reader_(reader), compression_(compression) {}

    /// Takes one piece from the front of `input`, whose bytes it unmasks in place. `needMore` when `input` is used up.
    /// After `violation` every call gives it again.
    Step next(std::span<char>& input) noexcept;

    const FramePiece& piece() const noexcept { return piece_; }
    /// Bytes of the current frame that are still to come; 0 between frames.
    std::uint64_t missing() const noexcept { return inPayload_ ? piece_.header.length - position_ : 0; }
    const Violation& violation() const noexcept { return violation_; }

private:
    using Head = std::array<std::uint8_t, maximumFrameHeader>;

    Step readHeader(std::span<char>& input) noexcept;
    std::size_t decode(const std::uint8_t* head, std::size_t available) noexcept;
    bool refuse(const char* reason) noexcept;
    bool acceptFirstBytes(unsigned first, unsigned second) noexcept;

    const Role reader_;
    const bool compression_;
    bool inPayload_ = false;
    bool failed_ = false;
    MaskKey key_{};
    std::uint64_t position_ = 0; ///< in the payload
    std::size_t stashed_ = 0;
    Head stash_{}; ///< the beginning of a header that the network cut
    FramePiece piece_;
    Violation violation_;
};

} // namespace zentavo::websocket
