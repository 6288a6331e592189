#include "zentavo/foundation/UUID.h"

#include "zentavo/foundation/Digits.h"

namespace zentavo::uuid {

std::string text(const std::array<std::uint8_t, 16>& bytes) {
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += detail::upperHexDigits[bytes[i] >> 4U];
        text += detail::upperHexDigits[bytes[i] & 15U];
    }
    return text;
}

std::array<std::uint8_t, 16> version4(std::array<std::uint8_t, 16> random) noexcept {
    random[6] = static_cast<std::uint8_t>((random[6] & 0x0FU) | 0x40U);
    random[8] = static_cast<std::uint8_t>((random[8] & 0x3FU) | 0x80U);
    return random;
}

} // namespace zentavo::uuid
