#include "zentavo/websocket/Sha1.h"

#include <bit>
#include <string>

namespace zentavo::websocket {
namespace {

using State = std::array<std::uint32_t, 5>;

void mix(State& state, const char* block) {
    std::array<std::uint32_t, 80> words;
    for (std::size_t i = 0; i < 16; ++i) {
        const auto byte = [&](std::size_t j) { return std::uint32_t{static_cast<std::uint8_t>(block[4 * i + j])}; };
        words[i] = byte(0) << 24U | byte(1) << 16U | byte(2) << 8U | byte(3);
    }
    for (std::size_t i = 16; i < 80; ++i) {
        words[i] = std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
    }
    auto [a, b, c, d, e] = state;
    for (std::size_t i = 0; i < 80; ++i) {
        const std::uint32_t choice = i < 20   ? ((b & c) | (~b & d)) + 0x5A827999U
                                     : i < 40 ? (b ^ c ^ d) + 0x6ED9EBA1U
                                     : i < 60 ? ((b & c) | (b & d) | (c & d)) + 0x8F1BBCDCU
                                              : (b ^ c ^ d) + 0xCA62C1D6U;
        const std::uint32_t next = std::rotl(a, 5) + choice + e + words[i];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d, state[4] + e};
}

} // namespace

std::array<std::uint8_t, 20> sha1(std::string_view text) {
    std::string padded(text);
    padded += '\x80';
    padded.resize((padded.size() + 8 + 63) / 64 * 64 - 8, '\0');
    const std::uint64_t bits = std::uint64_t{text.size()} * 8;
    for (int shift = 56; shift >= 0; shift -= 8) {
        padded += static_cast<char>(bits >> static_cast<unsigned>(shift) & 0xFFU);
    }
    State state{0x67452301U, 0xEFCDAB89U, 0x98BADCFEU, 0x10325476U, 0xC3D2E1F0U};
    for (std::size_t at = 0; at < padded.size(); at += 64) {
        mix(state, padded.data() + at);
    }
    std::array<std::uint8_t, 20> digest;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

} // namespace zentavo::websocket
