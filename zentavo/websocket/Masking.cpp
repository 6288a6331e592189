#include "zentavo/websocket/Masking.h"

#include <cstring>

namespace zentavo::websocket {
namespace {

// A vector as wide as every machine of ours has one; compilers without such a unit split it into words.
using Vector [[gnu::vector_size(16)]] = std::uint64_t;

template <class Word>
inline void maskWord(char* at, Word key) noexcept {
    Word word;
    std::memcpy(&word, at, sizeof word);
    word ^= key;
    std::memcpy(at, &word, sizeof word);
}

} // namespace

void applyMask(std::span<char> bytes, MaskKey key, std::uint64_t position) noexcept {
    // The key as it falls on the first byte. All strides below are multiples of 4, so it stays in step.
    MaskKey turned;
    for (std::size_t i = 0; i < 4; ++i) {
        turned[i] = key[(position + i) & 3U];
    }
    std::uint32_t key32;
    std::memcpy(&key32, turned.data(), sizeof key32);
    const std::uint64_t key64 = (std::uint64_t{key32} << 32U) | key32;
    const Vector wide = {key64, key64};

    char* at = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= 64; at += 64, left -= 64) {
        maskWord(at, wide);
        maskWord(at + 16, wide);
        maskWord(at + 32, wide);
        maskWord(at + 48, wide);
    }
    for (; left >= 8; at += 8, left -= 8) {
        maskWord(at, key64);
    }
    for (std::size_t i = 0; i < left; ++i) {
        at[i] = static_cast<char>(static_cast<std::uint8_t>(at[i]) ^ turned[i & 3U]);
    }
}

} // namespace zentavo::websocket
