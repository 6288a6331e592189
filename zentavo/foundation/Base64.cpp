#include "zentavo/foundation/Base64.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zentavo::base64 {
namespace {

constexpr std::string_view standardAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view urlAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

using ReverseTable = std::array<std::int8_t, 256>;

constexpr ReverseTable reverse(std::string_view alphabet) {
    ReverseTable table{};
    table.fill(-1);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        table[static_cast<unsigned char>(alphabet[i])] = static_cast<std::int8_t>(i);
    }
    return table;
}

constexpr ReverseTable standardReverse = reverse(standardAlphabet);
constexpr ReverseTable urlReverse = reverse(urlAlphabet);

std::string encodeWith(std::string_view alphabet, bool padded, std::span<const std::uint8_t> bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t group = std::uint32_t{bytes[i]} << 16U;
        group |= count > 1 ? std::uint32_t{bytes[i + 1]} << 8U : 0U;
        group |= count > 2 ? std::uint32_t{bytes[i + 2]} : 0U;
        for (std::size_t digit = 0; digit < 4; ++digit) {
            if (digit <= count) {
                text += alphabet[(group >> (18U - 6U * digit)) & 63U];
            } else if (padded) {
                text += '=';
            }
        }
    }
    return text;
}

enum class Padding { needed, optional };

bool decodeWith(const ReverseTable& table, std::string_view text, Unknown unknown, Padding padding,
                std::vector<std::uint8_t>& bytes) {
    bytes.clear();
    bytes.reserve(text.size() / 4 * 3 + 3); // never grows: growing would leave copies behind
    std::uint32_t group = 0;
    std::size_t digits = 0;
    std::size_t pads = 0;
    for (const char c : text) {
        const std::int8_t digit = table[static_cast<unsigned char>(c)];
        if (c == '=') {
            ++pads;
        } else if (digit < 0) {
            if (unknown == Unknown::refuse) {
                return false;
            }
        } else if (pads > 0) {
            return false;
        } else {
            group = group << 6U | static_cast<std::uint32_t>(digit);
            if (++digits % 4 == 0) {
                bytes.push_back(static_cast<std::uint8_t>(group >> 16U));
                bytes.push_back(static_cast<std::uint8_t>(group >> 8U));
                bytes.push_back(static_cast<std::uint8_t>(group));
                group = 0;
            }
        }
    }
    const std::size_t rest = digits % 4;
    const std::size_t wanted = rest == 0 ? 0 : 4 - rest;
    if (rest == 1 || (pads != wanted && (padding == Padding::needed || pads != 0))) {
        return false;
    }
    // The bits after the last whole byte are zero in what encoders write; anything else would be a second spelling.
    if (rest == 2) {
        if ((group & 0xFU) != 0) {
            return false;
        }
        bytes.push_back(static_cast<std::uint8_t>(group >> 4U));
    } else if (rest == 3) {
        if ((group & 3U) != 0) {
            return false;
        }
        bytes.push_back(static_cast<std::uint8_t>(group >> 10U));
        bytes.push_back(static_cast<std::uint8_t>(group >> 2U));
    }
    return true;
}

std::optional<std::vector<std::uint8_t>> decoded(const ReverseTable& table, std::string_view text, Unknown unknown,
                                                 Padding padding) {
    std::vector<std::uint8_t> bytes;
    return decodeWith(table, text, unknown, padding, bytes) ? std::optional(std::move(bytes)) : std::nullopt;
}

Padding paddingFor(Unknown unknown) { return unknown == Unknown::refuse ? Padding::needed : Padding::optional; }

} // namespace

std::string encode(std::span<const std::uint8_t> bytes) { return encodeWith(standardAlphabet, true, bytes); }

std::optional<std::vector<std::uint8_t>> decode(std::string_view text, Unknown unknown) {
    return decoded(standardReverse, text, unknown, paddingFor(unknown));
}

bool decode(std::string_view text, Unknown unknown, std::vector<std::uint8_t>& bytes) {
    return decodeWith(standardReverse, text, unknown, paddingFor(unknown), bytes);
}

std::string encodeURL(std::span<const std::uint8_t> bytes) { return encodeWith(urlAlphabet, false, bytes); }

std::optional<std::vector<std::uint8_t>> decodeURL(std::string_view text) {
    return decoded(urlReverse, text, Unknown::refuse, Padding::optional);
}

} // namespace zentavo::base64
