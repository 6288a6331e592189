#include "ports/linux/MachineId.h"

#include <algorithm>
#include <bit>
#include <string>

#include "ports/linux/TextFile.h"
#include "zentavo/foundation/UUID.h"

namespace zentavo::linux_port {
namespace {

using Block = std::array<std::uint8_t, 64>;
using Digest = std::array<std::uint8_t, 32>;
using State = std::array<std::uint32_t, 8>;

/// FIPS 180-4.
constexpr State initialState = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
constexpr std::array<std::uint32_t, 64> roundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

void compress(State& state, const Block& block) {
    std::array<std::uint32_t, 64> w{};
    for (std::size_t i = 0; i < 16; ++i) {
        w[i] = std::uint32_t(block[4 * i]) << 24U | std::uint32_t(block[4 * i + 1]) << 16U |
               std::uint32_t(block[4 * i + 2]) << 8U | block[4 * i + 3];
    }
    for (std::size_t i = 16; i < w.size(); ++i) {
        const std::uint32_t a = std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ (w[i - 15] >> 3U);
        const std::uint32_t b = std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ (w[i - 2] >> 10U);
        w[i] = w[i - 16] + a + w[i - 7] + b;
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < w.size(); ++i) {
        const std::uint32_t choice = (e & f) ^ (~e & g);
        const std::uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
        const std::uint32_t first =
            h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + choice + roundConstants[i] + w[i];
        const std::uint32_t second = (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + majority;
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const State mixed = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i) {
        state[i] += mixed[i];
    }
}

/// SHA-256 of one block and a `tail` of at most 55 bytes, which is all that a keyed hash of something short takes.
template <std::size_t N>
Digest hash(const Block& head, const std::array<std::uint8_t, N>& tail) {
    static_assert(N <= 55);
    Block last{};
    std::copy(tail.begin(), tail.end(), last.begin());
    last[N] = 0x80;
    constexpr std::size_t bits = (sizeof(Block) + N) * 8;
    last[62] = static_cast<std::uint8_t>(bits >> 8U);
    last[63] = static_cast<std::uint8_t>(bits);
    State state = initialState;
    compress(state, head);
    compress(state, last);
    Digest digest{};
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

/// The key as a block, each byte mixed with `pad` (RFC 2104).
Block padded(const Id128& key, std::uint8_t pad) {
    Block block{};
    std::copy(key.begin(), key.end(), block.begin());
    for (std::uint8_t& byte : block) {
        byte ^= pad;
    }
    return block;
}

std::optional<unsigned> hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return std::nullopt;
}

} // namespace

std::optional<Id128> readMachineId(const std::filesystem::path& file) {
    constexpr std::size_t maximumBytes = 64;
    const auto text = readTextFile(file, maximumBytes);
    Id128 id{};
    // 32 digits and a line end; "uninitialized" while the first boot is under way.
    if (!text || text->size() < 2 * id.size() || (text->size() > 2 * id.size() && (*text)[2 * id.size()] != '\n')) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < id.size(); ++i) {
        const auto high = hexDigit((*text)[2 * i]);
        const auto low = hexDigit((*text)[2 * i + 1]);
        if (!high || !low) {
            return std::nullopt;
        }
        id[i] = static_cast<std::uint8_t>(*high << 4U | *low);
    }
    return id == Id128{} ? std::nullopt : std::optional(id);
}

Id128 appSpecificId(const Id128& machine, const Id128& application) {
    const Digest digest = hash(padded(machine, 0x5C), hash(padded(machine, 0x36), application));
    Id128 id{};
    std::copy_n(digest.begin(), id.size(), id.begin());
    return uuid::version4(id);
}

Id128 applicationIdOf(std::string_view vendor) {
    // Ours, drawn once; the vendor's name is hashed under it.
    constexpr Id128 sdk = {0x8d, 0x4e, 0x27, 0x91, 0x0b, 0xf3, 0x4c, 0x68,
                           0xa5, 0x1e, 0x73, 0xd0, 0x96, 0x42, 0xbc, 0x5f};
    Id128 id = sdk;
    std::array<std::uint8_t, 24> piece{};
    // Sixteen bytes at a time, chained, so that a name of any length counts whole; the length ends it.
    for (std::size_t at = 0; at <= vendor.size(); at += 16) {
        piece.fill(0);
        const auto part = vendor.substr(at, 16);
        std::copy(part.begin(), part.end(), piece.begin());
        piece[16] = static_cast<std::uint8_t>(part.size());
        const Digest digest = hash(padded(id, 0), piece);
        std::copy_n(digest.begin(), id.size(), id.begin());
    }
    return id;
}

} // namespace zentavo::linux_port
