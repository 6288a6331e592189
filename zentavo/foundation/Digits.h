#pragma once

#include <cstddef>
#include <string_view>

/// Hexadecimal digits, as hex text, percent escapes and UUIDs share them. Not installed.
namespace zentavo::detail {

inline constexpr char lowerHexDigits[] = "0123456789abcdef";
inline constexpr char upperHexDigits[] = "0123456789ABCDEF";

/// The value of one digit of either case, or -1.
constexpr int hexDigit(char c) noexcept {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

/// The byte that the two digits at `position` stand for, or -1 when they are not there.
constexpr int hexByte(std::string_view text, std::size_t position) noexcept {
    if (position + 2 > text.size()) {
        return -1;
    }
    const int high = hexDigit(text[position]);
    const int low = hexDigit(text[position + 1]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

} // namespace zentavo::detail
