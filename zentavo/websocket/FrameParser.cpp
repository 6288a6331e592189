#include "zentavo/websocket/FrameParser.h"

#include <algorithm>
#include <cstring>

#include "zentavo/websocket/Masking.h"

namespace zentavo::websocket {

bool FrameParser::refuse(const char* reason) noexcept {
    violation_ = {CloseCode::protocolError, reason};
    failed_ = true;
    return false;
}

bool FrameParser::acceptFirstBytes(unsigned first, unsigned second) noexcept {
    const unsigned number = first & 0x0FU;
    const auto opcode = static_cast<Opcode>(number);
    const bool final = (first & 0x80U) != 0;
    const bool compressed = (first & 0x40U) != 0;
    if ((first & 0x30U) != 0) {
        return refuse("a reserved bit is set");
    }
    if (number > 10 || (number > 2 && number < 8)) {
        return refuse("unknown opcode");
    }
    if (compressed && (!compression_ || (opcode != Opcode::text && opcode != Opcode::binary))) {
        return refuse("a frame is marked as compressed that must not be");
    }
    if (isControl(opcode) && !final) {
        return refuse("a control frame is fragmented");
    }
    if (isControl(opcode) && (second & 0x7FU) > maximumControlPayload) {
        return refuse("a control frame is too long");
    }
    if (((second & 0x80U) != 0) != (reader_ == Role::server)) {
        return refuse(reader_ == Role::server ? "a client's frame is not masked" : "a server's frame is masked");
    }
    piece_.header = {final, compressed, opcode, second & 0x7FU};
    return true;
}

/// The length of the header when it is complete, else 0.
std::size_t FrameParser::decode(const std::uint8_t* head, std::size_t available) noexcept {
    if (available < 2 || !acceptFirstBytes(head[0], head[1])) {
        return 0;
    }
    FrameHeader& header = piece_.header;
    const std::size_t lengthBytes = header.length < 126 ? 0 : header.length == 126 ? 2 : 8;
    const bool masked = reader_ == Role::server;
    const std::size_t size = 2 + lengthBytes + (masked ? 4 : 0);
    if (available < size) {
        return 0;
    }
    if (lengthBytes != 0) {
        header.length = 0;
        for (std::size_t i = 0; i < lengthBytes; ++i) {
            header.length = header.length << 8U | head[2 + i];
        }
        if (header.length < (lengthBytes == 2 ? 126U : 65536U)) {
            refuse("a length is not written in its shortest form");
            return 0;
        }
        if (header.length >> 63U != 0) {
            refuse("a length is beyond 63 bits");
            return 0;
        }
    }
    if (masked) {
        std::memcpy(key_.data(), head + 2 + lengthBytes, key_.size());
    }
    return size;
}

FrameParser::Step FrameParser::readHeader(std::span<char>& input) noexcept {
    std::size_t size;
    if (stashed_ == 0 && input.size() >= maximumFrameHeader) {
        size = decode(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    } else {
        const std::size_t copied = std::min(stash_.size() - stashed_, input.size());
        if (copied != 0) {
            std::memcpy(stash_.data() + stashed_, input.data(), copied);
        }
        size = decode(stash_.data(), stashed_ + copied);
        if (size == 0 && !failed_) {
            stashed_ += copied;
            input = input.subspan(copied);
            return Step::needMore;
        }
        // What was stashed before has left the input already.
        size -= failed_ ? 0 : stashed_;
    }
    if (failed_) {
        return Step::violation;
    }
    stashed_ = 0;
    input = input.subspan(size);
    position_ = 0;
    return Step::piece;
}

FrameParser::Step FrameParser::next(std::span<char>& input) noexcept {
    if (failed_) {
        return Step::violation;
    }
    piece_.begins = !inPayload_;
    if (!inPayload_) {
        const Step step = readHeader(input);
        if (step != Step::piece) {
            return step;
        }
    } else if (input.empty()) {
        return Step::needMore;
    }
    const std::uint64_t missing = piece_.header.length - position_;
    const auto data = input.first(static_cast<std::size_t>(std::min<std::uint64_t>(missing, input.size())));
    input = input.subspan(data.size());
    if (reader_ == Role::server) {
        applyMask(data, key_, position_);
    }
    position_ += data.size();
    piece_.data = {data.data(), data.size()};
    piece_.ends = position_ == piece_.header.length;
    inPayload_ = !piece_.ends;
    return Step::piece;
}

} // namespace zentavo::websocket
