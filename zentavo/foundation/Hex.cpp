#include "zentavo/foundation/Hex.h"

#include "zentavo/foundation/Digits.h"

namespace zentavo::hex {

std::string encode(std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const unsigned byte : bytes) {
        text += detail::lowerHexDigits[byte >> 4U];
        text += detail::lowerHexDigits[byte & 15U];
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> decode(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int byte = detail::hexByte(text, i); // -1 also where only one digit is left
        if (byte < 0) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    return bytes;
}

} // namespace zentavo::hex
