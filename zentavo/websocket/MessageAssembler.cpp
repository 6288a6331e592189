#include "zentavo/websocket/MessageAssembler.h"

#include <algorithm>
#include <cstring>

#include "zentavo/foundation/UTF8.h"

namespace zentavo::websocket {
namespace {

// A buffer that one large message made is given back rather than kept for the life of the connection.
constexpr std::size_t keptCapacity = std::size_t{4} << 20U;

// A length that a frame claims is believed so far at a time.
constexpr std::size_t stride = 262144;

} // namespace

MessageAssembler::MessageAssembler(std::size_t maximumMessage, std::unique_ptr<Inflater> inflater)
    : maximum_(maximumMessage), inflater_(std::move(inflater)) {}

bool MessageAssembler::refuse(CloseCode code, const char* reason) {
    violation_ = {code, reason};
    return false;
}

MessageAssembler::Outcome MessageAssembler::take(const FramePiece& piece) {
    if (isControl(piece.header.opcode)) {
        return takeControl(piece);
    }
    if (given_) {
        given_ = false;
        size_ = 0;
        expanded_.clear();
        if (expanded_.capacity() > keptCapacity) {
            expanded_.shrink_to_fit();
        }
        if (plain_.size() > keptCapacity) {
            plain_ = {};
        }
    }
    if (piece.begins && !beginFrame(piece.header)) {
        return Outcome::violation;
    }
    const bool last = piece.ends && piece.header.final;
    // A message that lies in the input as a whole, which is most of them, is not copied.
    const bool whole = last && piece.begins && piece.header.opcode != Opcode::continuation && !compressed_;
    if (whole) {
        content_ = piece.data;
    } else if (compressed_) {
        if (!expand(piece, last)) {
            return Outcome::violation;
        }
        content_ = expanded_;
    } else {
        append(piece.data);
        content_ = {plain_.data(), size_};
    }
    if (kind_ == MessageKind::text) {
        const std::string_view fresh = whole || !compressed_ ? piece.data : std::string_view();
        if (!fresh.empty() && !utf8_.feed(fresh)) {
            refuse(CloseCode::invalidData, "text is not UTF-8");
            return Outcome::violation;
        }
        if (last && !utf8_.complete()) {
            refuse(CloseCode::invalidData, "text ends inside a character");
            return Outcome::violation;
        }
    }
    if (!last) {
        return Outcome::more;
    }
    given_ = !whole;
    inMessage_ = false;
    return Outcome::message;
}

bool MessageAssembler::beginFrame(const FrameHeader& header) {
    if (header.opcode == Opcode::continuation) {
        if (!inMessage_) {
            return refuse(CloseCode::protocolError, "a continuation continues nothing");
        }
    } else {
        if (inMessage_) {
            return refuse(CloseCode::protocolError, "a message begins inside another");
        }
        inMessage_ = true;
        kind_ = header.opcode == Opcode::text ? MessageKind::text : MessageKind::binary;
        compressed_ = header.compressed;
        utf8_.reset();
    }
    // What is compressed is measured when it is expanded; not even as it stands may it be longer than that by much.
    const std::size_t room = maximum_ - std::min(maximum_, compressed_ ? 0 : size_);
    if (header.length > room && (!compressed_ || header.length - room > 1024 + room / 8)) {
        return refuse(CloseCode::tooLarge, "a message is too large");
    }
    return true;
}

void MessageAssembler::append(std::string_view data) {
    if (data.empty()) {
        return;
    }
    if (data.data() != plain_.data() + size_) { // what lies in its room is there already
        grow(size_ + data.size());
        std::memcpy(plain_.data() + size_, data.data(), data.size());
    }
    size_ += data.size();
}

void MessageAssembler::grow(std::size_t needed) {
    if (needed > plain_.size()) {
        plain_.resize(std::max(needed, std::min(plain_.size() * 2, maximum_)));
    }
}

std::span<char> MessageAssembler::room(std::uint64_t missing) {
    if (!inMessage_ || compressed_ || missing == 0) {
        return {};
    }
    const auto size = static_cast<std::size_t>(std::min<std::uint64_t>(missing, stride));
    grow(size_ + size);
    return std::span(plain_).subspan(size_, size);
}

bool MessageAssembler::expand(const FramePiece& piece, bool last) {
    const std::size_t before = expanded_.size();
    const Inflater::Outcome outcome = inflater_->expand(piece.data, last, expanded_, maximum_);
    // What was expanded stands before what could not be: of two faults the first in the message counts, however its
    // bytes arrive.
    if (kind_ == MessageKind::text && !utf8_.feed(std::string_view(expanded_).substr(before))) {
        return refuse(CloseCode::invalidData, "text is not UTF-8");
    }
    switch (outcome) {
    case Inflater::Outcome::ok:
        break;
    case Inflater::Outcome::corrupt:
        return refuse(CloseCode::invalidData, "compressed data is corrupt");
    case Inflater::Outcome::tooLarge:
        return refuse(CloseCode::tooLarge, "a message is too large when expanded");
    }
    return true;
}

MessageAssembler::Outcome MessageAssembler::takeControl(const FramePiece& piece) {
    if (piece.begins && piece.ends) {
        content_ = piece.data;
    } else {
        if (piece.begins) {
            control_.clear();
        }
        control_.append(piece.data);
        content_ = control_;
    }
    if (!piece.ends) {
        return Outcome::more;
    }
    switch (piece.header.opcode) {
    case Opcode::ping:
        return Outcome::ping;
    case Opcode::pong:
        return Outcome::pong;
    default:
        return takeClose();
    }
}

MessageAssembler::Outcome MessageAssembler::takeClose() {
    closeCode_ = CloseCode::noStatus;
    if (content_.empty()) {
        return Outcome::close;
    }
    if (content_.size() == 1) {
        refuse(CloseCode::protocolError, "a close code is half there");
        return Outcome::violation;
    }
    closeCode_ =
        static_cast<CloseCode>(static_cast<std::uint8_t>(content_[0]) << 8U | static_cast<std::uint8_t>(content_[1]));
    content_.remove_prefix(2);
    if (!maySend(closeCode_)) {
        refuse(CloseCode::protocolError, "a close code that may not be sent");
        return Outcome::violation;
    }
    if (!utf8::isValid(content_)) {
        refuse(CloseCode::invalidData, "the reason for closing is not UTF-8");
        return Outcome::violation;
    }
    return Outcome::close;
}

} // namespace zentavo::websocket
