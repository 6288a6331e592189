#pragma once

#include <bit>
#include <cstddef>
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

template <class Word>
Word loadWord(const char* data) noexcept {
    Word word;
    std::memcpy(&word, data, sizeof word);
    return word;
}

/// True when any of eight bytes is not plain. The high bit of each byte's sum of tests is its mark; a borrow can only
/// mark a byte next to one that is marked already.
inline bool hasSpecial(std::uint64_t word) noexcept {
    constexpr std::uint64_t ones = 0x0101010101010101U;
    constexpr std::uint64_t highs = 0x8080808080808080U;
    const auto zeroBytes = [](std::uint64_t v) { return (v - ones) & ~v; };
    const std::uint64_t control = word - ones * 0x20;
    return ((word | control | zeroBytes(word ^ (ones * '"')) | zeroBytes(word ^ (ones * '\\'))) & highs) != 0;
}

#if defined(__SSE2__)
/// The same for sixteen bytes.
inline bool hasSpecial(__m128i bytes) noexcept {
    // Compared as signed numbers, control characters and everything beyond ASCII are below the blank.
    const __m128i special = _mm_or_si128(
        _mm_cmplt_epi8(bytes, _mm_set1_epi8(0x20)),
        _mm_or_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('"')), _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\'))));
    return _mm_movemask_epi8(special) != 0;
}
template <>
inline __m128i loadWord<__m128i>(const char* data) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
}
using WideWord = __m128i;
#else
using WideWord = std::uint64_t;
#endif

/// Texts up to here are copied by `copyPlainJSON`.
constexpr std::size_t shortJSON = 2 * sizeof(WideWord);

/// Copies `text`, of at most `shortJSON` bytes, to `to`. False when a byte is not plain; `to` then holds rubbish. Looking
/// and copying share their loads.
inline bool copyPlainJSON(char* to, std::string_view text) noexcept {
    const auto copyEnds = [&]<class Word>(Word first, Word last) {
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + text.size() - sizeof last, &last, sizeof last);
        return !hasSpecial(first) && !hasSpecial(last);
    };
    const char* const data = text.data();
    const std::size_t size = text.size();
    if (size >= sizeof(WideWord)) {
        return copyEnds(loadWord<WideWord>(data), loadWord<WideWord>(data + size - sizeof(WideWord)));
    }
    if (size >= 8) {
        return copyEnds(loadWord<std::uint64_t>(data), loadWord<std::uint64_t>(data + size - 8));
    }
    if (size >= 4) {
        const auto first = loadWord<std::uint32_t>(data);
        const auto last = loadWord<std::uint32_t>(data + size - 4);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + size - 4, &last, sizeof last);
        return !hasSpecial(std::uint64_t{first} << 32U | last);
    }
    bool plain = true;
    for (std::size_t i = 0; i < size; ++i) {
        to[i] = data[i];
        plain &= isPlainJSON(data[i]);
    }
    return plain;
}

/// How many bytes from the start of `text` are plain.
inline std::size_t plainPrefix(std::string_view text) noexcept {
    std::size_t i = 0;
    while (i + sizeof(WideWord) <= text.size() && !hasSpecial(loadWord<WideWord>(text.data() + i))) {
        i += sizeof(WideWord);
    }
    while (i < text.size() && isPlainJSON(text[i])) {
        ++i;
    }
    return i;
}

} // namespace zentavo::detail
