#include "zentavo/foundation/DERReader.h"

#include <string>

namespace zentavo {

DERReader::DERReader(std::span<const std::uint8_t> bytes) noexcept : bytes_(bytes) { ends_[0] = bytes.size(); }

bool DERReader::nextIs(DERTag tag) const noexcept {
    return !failed() && position_ < end() && bytes_[position_] == static_cast<std::uint8_t>(tag);
}

/// Steps over identifier and length, and says how many bytes of contents follow; they are all there.
std::size_t DERReader::openElement(DERTag tag) noexcept {
    if (!nextIs(tag)) {
        fail(position_ < end() ? "another kind of element was expected" : "an element is missing");
        return 0;
    }
    std::size_t start = position_ + 1;
    const auto left = [&] { return end() - start; };
    if (left() < 1) {
        fail("the length of an element is missing");
        return 0;
    }
    std::size_t length = bytes_[start++];
    if (length >= 0x80) {
        const std::size_t count = length & 0x7FU;
        if (count == 0 || count > 4) {
            fail("a length is indefinite or far too large");
            return 0;
        }
        if (left() < count) {
            fail("the length of an element is cut off");
            return 0;
        }
        length = 0;
        for (std::size_t i = 0; i < count; ++i) {
            length = length << 8U | bytes_[start++];
        }
        if (length < 0x80 || length >> 8U * (count - 1) == 0) {
            fail("a length is not written the shortest way");
            return 0;
        }
    }
    if (length > left()) {
        fail("an element is longer than what holds it");
        return 0;
    }
    position_ = start;
    return length;
}

std::span<const std::uint8_t> DERReader::read(DERTag tag) noexcept {
    const std::size_t length = openElement(tag);
    if (failed()) {
        return {};
    }
    const auto contents = bytes_.subspan(position_, length);
    position_ += length;
    return contents;
}

std::span<const std::uint8_t> DERReader::readUnsigned() noexcept {
    const auto digits = read(DERTag::integer);
    if (failed()) {
        return {};
    }
    if (digits.empty() || digits[0] >= 0x80) {
        fail("an integer is empty or negative");
        return {};
    }
    if (digits[0] != 0 || digits.size() == 1) {
        return digits;
    }
    if (digits[1] < 0x80) {
        fail("an integer is not written the shortest way");
        return {};
    }
    return digits.subspan(1);
}

std::span<const std::uint8_t> DERReader::enter(DERTag tag) noexcept {
    const std::size_t length = openElement(tag);
    if (failed()) {
        return {};
    }
    if (depth_ + 1 == deepest) {
        fail("elements are nested too deeply");
        return {};
    }
    ends_[++depth_] = position_ + length;
    return bytes_.subspan(position_, length);
}

std::span<const std::uint8_t> DERReader::enterBitString() noexcept {
    const auto contents = enter(DERTag::bitString);
    if (failed()) {
        return {};
    }
    if (contents.empty() || contents[0] != 0) { // the first byte counts the bits that the last one does not use
        fail("a bit string is not made of whole bytes");
        return {};
    }
    ++position_;
    return contents.subspan(1);
}

void DERReader::leave() noexcept {
    if (failed()) {
        return;
    }
    if (position_ != end()) {
        fail("there is more than was expected");
        return;
    }
    if (depth_ > 0) {
        --depth_;
    }
}

void DERReader::fail(const char* why) noexcept {
    if (!failed()) {
        why_ = why;
    }
}

Result<void> DERReader::finish() {
    leave();
    if (failed()) {
        return Error{"at byte " + std::to_string(position_) + ": " + why_};
    }
    return {};
}

} // namespace zentavo
