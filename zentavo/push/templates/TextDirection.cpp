#include "zentavo/push/templates/TextDirection.h"

#include <cstddef>
#include <cstdint>

namespace zentavo {

namespace {

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

/// Hebrew, Arabic, Syriac, Thaana, N'Ko and their neighbours, the forms for presentation, and the scripts of the first
/// supplementary plane that run this way.
constexpr Range rightToLeft[] = {{0x0590, 0x08FF},   {0xFB1D, 0xFDFF},   {0xFE70, 0xFEFC},
                                 {0x10800, 0x10FFF}, {0x1E800, 0x1EFFF}, {0x200F, 0x200F}};
/// Digits and marks among them that say nothing about direction.
constexpr Range neutral[] = {{0x0600, 0x0607}, {0x060C, 0x060C}, {0x0660, 0x0669}, {0x06F0, 0x06F9}};

template <std::size_t count>
bool within(std::uint32_t letter, const Range (&ranges)[count]) {
    for (const Range& each : ranges) {
        if (letter >= each.first && letter <= each.last) {
            return true;
        }
    }
    return false;
}

bool isLetter(std::uint32_t letter) {
    if (letter < 0x80) {
        return (letter | 0x20U) >= 'a' && (letter | 0x20U) <= 'z';
    }
    // Signs, punctuation, arrows and pictures have no direction; most of the rest are letters.
    return letter >= 0xC0 && letter != 0xD7 && letter != 0xF7 && !(letter >= 0x2000 && letter < 0x2C00) &&
           !(letter >= 0x3000 && letter < 0x3005) && !(letter >= 0xFE00 && letter < 0xFE70) &&
           !(letter >= 0x1F000 && letter < 0x20000);
}

} // namespace

bool isRightToLeft(std::string_view text) noexcept {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        std::uint32_t letter = length == 1 ? lead : lead & (0xFFU >> (length + 1));
        for (std::size_t k = 1; k < length && i + k < text.size(); ++k) {
            letter = letter << 6U | (static_cast<unsigned char>(text[i + k]) & 0x3FU);
        }
        i += length;
        if (within(letter, neutral)) {
            continue;
        }
        if (within(letter, rightToLeft)) {
            return true;
        }
        if (isLetter(letter)) {
            return false;
        }
    }
    return false;
}

} // namespace zentavo
