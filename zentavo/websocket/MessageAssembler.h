#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/websocket/Deflate.h"
#include "zentavo/websocket/FrameParser.h"
#include "zentavo/websocket/UTF8Validator.h"

namespace zentavo::websocket {

/// Pieces of frames in, whole messages and control frames out. Text is checked and limits are held while the bytes
/// come in, not when the message is complete.
class ZENTAVO_EXPORT MessageAssembler {
public:
    enum class Outcome { more, message, ping, pong, close, violation };

    /// `maximumMessage`: bytes of a message, expanded. `inflater` may be null: then no frame is marked as compressed.
    MessageAssembler(std::size_t maximumMessage, std::unique_ptr<Inflater> inflater);

    Outcome take(const FramePiece& piece);

    /// Where the next `missing` bytes of the message under way would best lie, or as many of them as there is room for:
    /// `take` then has nothing to copy. Empty where they cannot be used as they come. Holds until the next `take`.
    std::span<char> room(std::uint64_t missing);

    /// Of the last outcome; the view holds until the next `take`, and no longer than the bytes of the piece.
    MessageKind kind() const noexcept { return kind_; }
    std::string_view content() const noexcept { return content_; }
    /// Of `close`; `noStatus` when the peer gave none.
    CloseCode closeCode() const noexcept { return closeCode_; }
    const Violation& violation() const noexcept { return violation_; }

private:
    Outcome takeControl(const FramePiece& piece);
    Outcome takeClose();
    bool beginFrame(const FrameHeader& header);
    void append(std::string_view data);
    void grow(std::size_t needed);
    bool expand(const FramePiece& piece, bool last);
    bool refuse(CloseCode code, const char* reason);

    const std::size_t maximum_;
    const std::unique_ptr<Inflater> inflater_;
    UTF8Validator utf8_;
    MessageKind kind_ = MessageKind::binary;
    bool inMessage_ = false;
    bool compressed_ = false;
    bool given_ = false;      ///< the message was handed out and is to be cleared
    std::string expanded_;    ///< of a compressed message
    std::vector<char> plain_; ///< room for a message in several pieces, of which …
    std::size_t size_ = 0;    ///< … so much is there
    std::string control_;     ///< of a control frame in several pieces; these may stand between a message's
    std::string_view content_;
    CloseCode closeCode_ = CloseCode::noStatus;
    Violation violation_;
};

} // namespace zentavo::websocket
