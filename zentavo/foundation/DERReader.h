#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"

namespace zentavo {

/// The identifier octets that keys are made of. The numbered ones are context-specific.
enum class DERTag : std::uint8_t {
    integer = 0x02,
    bitString = 0x03,
    octetString = 0x04,
    null = 0x05,
    objectIdentifier = 0x06,
    sequence = 0x30,
    numbered1 = 0x81,
    numbered0Constructed = 0xA0,
};

/// Walks over DER (ITU-T X.690, section 10) without copying and without recursion. Only what DER allows is accepted:
/// definite lengths, written the shortest way, and no longer than what holds them.
///
/// The first failure stays: from then on everything reads as empty, nothing moves, and `finish` tells what and where it
/// was. So a caller reads a whole structure and asks once at the end.
class ZENTAVO_EXPORT DERReader {
public:
    /// `bytes` must outlive the reader.
    explicit DERReader(std::span<const std::uint8_t> bytes) noexcept;

    /// Whether the element that comes next here has this tag.
    bool nextIs(DERTag tag) const noexcept;
    /// Passes over the next element, and gives its contents.
    std::span<const std::uint8_t> read(DERTag tag) noexcept;
    /// The digits of an integer that is not negative, to the base of 256, without a leading zero; of 0 the one byte 0.
    std::span<const std::uint8_t> readUnsigned() noexcept;

    /// Goes into the next element, whose contents are elements, and gives these; `leave` ends it.
    std::span<const std::uint8_t> enter(DERTag tag) noexcept;
    /// The same for a bit string of whole bytes.
    std::span<const std::uint8_t> enterBitString() noexcept;
    /// Everything inside must have been read.
    void leave() noexcept;

    /// A failure of the caller's own, at the place that was reached. `why` lives as long as the program.
    void fail(const char* why) noexcept;
    bool failed() const noexcept { return why_ != nullptr; }
    /// The failure, if there was one. Bytes behind the last element are one.
    Result<void> finish();

private:
    std::size_t openElement(DERTag tag) noexcept;
    std::size_t end() const noexcept { return ends_[depth_]; }

    static constexpr std::size_t deepest = 8;

    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
    /// Where the elements end that were entered; the first is the end of all bytes.
    std::array<std::size_t, deepest> ends_{};
    std::size_t depth_ = 0;
    const char* why_ = nullptr;
};

} // namespace zentavo
