#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// The inner loop of writing JSON text. Not installed.
namespace zentavo::detail {

/// True for what stands in a JSON string as it is: ASCII but for control characters, `"` and `\`.
constexpr bool isPlainJSON(char c) noexcept {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\';
}

/// How many bytes at the start of the eight in `word` (little-endian) are plain. A byte's high bit marks it as not
/// plain; borrows can mark bytes above a marked one wrongly, never below, and only the lowest mark counts.
inline std::size_t plainBytesOf(std::uint64_t word) noexcept {
    constexpr std::uint64_t ones = 0x0101010101010101U;
    constexpr std::uint64_t highs = 0x8080808080808080U;
    const auto zeroBytes = [](std::uint64_t v) { return (v - ones) & ~v; };
    const std::uint64_t control = word - ones * 0x20;
    const std::uint64_t marks =
        (word | control | zeroBytes(word ^ (ones * '"')) | zeroBytes(word ^ (ones * '\\'))) & highs;
    return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

/// How many bytes from the start of `text` are plain.
inline std::size_t plainPrefix(std::string_view text) noexcept {
    const char* const data = text.data();
    const std::size_t size = text.size();
    std::size_t i = 0;
#if defined(__SSE2__)
    for (; i + 16 <= size; i += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + i));
        // Compared as signed numbers, control characters and everything beyond ASCII are below the blank.
        const __m128i special = _mm_or_si128(
            _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20)),
            _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'))));
        if (const int marks = _mm_movemask_epi8(special); marks != 0) {
            return i + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(marks)));
        }
    }
#endif
    if constexpr (std::endian::native == std::endian::little) {
        for (; i + 8 <= size; i += 8) {
            std::uint64_t word = 0;
            std::memcpy(&word, data + i, sizeof word);
            if (const std::size_t plain = plainBytesOf(word); plain < 8) {
                return i + plain;
            }
        }
    }
    while (i < size && isPlainJSON(data[i])) {
        ++i;
    }
    return i;
}

} // namespace zentavo::detail
