#include "zentavo/foundation/UTF8.h"

namespace zentavo::utf8 {

std::size_t characterLength(std::string_view text, std::size_t position) noexcept {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[position + i]); };
    const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    const std::size_t left = text.size() - position;
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xE0) {
        return first >= 0xC2 && left >= 2 && continues(1) ? 2 : 0;
    }
    if (first < 0xF0) {
        if (left < 3 || !continues(1) || !continues(2)) {
            return 0;
        }
        const bool overlong = first == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = first == 0xED && byte(1) >= 0xA0;
        return overlong || surrogate ? 0 : 3;
    }
    if (first > 0xF4 || left < 4 || !continues(1) || !continues(2) || !continues(3)) {
        return 0;
    }
    const bool overlong = first == 0xF0 && byte(1) < 0x90;
    const bool beyondUnicode = first == 0xF4 && byte(1) >= 0x90;
    return overlong || beyondUnicode ? 0 : 4;
}

bool isValid(std::string_view text) noexcept {
    for (std::size_t i = 0; i < text.size();) {
        if (static_cast<unsigned char>(text[i]) < 0x80) { // nearly always, and worth no call
            ++i;
            continue;
        }
        const std::size_t length = characterLength(text, i);
        if (length == 0) {
            return false;
        }
        i += length;
    }
    return true;
}

} // namespace zentavo::utf8
