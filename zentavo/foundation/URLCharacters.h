#pragma once

#include <string>
#include <string_view>

#include "zentavo/foundation/Digits.h"

/// The character classes of RFC 3986. Not installed.
namespace zentavo::detail {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool isOneOf(char c, std::string_view set) noexcept { return set.find(c) != std::string_view::npos; }

constexpr bool isUnreserved(char c) noexcept { return isLetter(c) || isDigit(c) || isOneOf(c, "-._~"); }
constexpr bool isSubDelimiter(char c) noexcept { return isOneOf(c, "!$&'()*+,;="); }

constexpr bool isSchemeCharacter(char c) noexcept { return isLetter(c) || isDigit(c) || isOneOf(c, "+-."); }
constexpr bool isHostCharacter(char c) noexcept { return isUnreserved(c) || isSubDelimiter(c); }
constexpr bool isUserInfoCharacter(char c) noexcept { return isHostCharacter(c) || c == ':'; }
constexpr bool isPathCharacter(char c) noexcept { return isHostCharacter(c) || isOneOf(c, ":@/"); }
/// Also those of the fragment.
constexpr bool isQueryCharacter(char c) noexcept { return isPathCharacter(c) || c == '?'; }
constexpr bool isQueryItemCharacter(char c) noexcept { return isQueryCharacter(c) && c != '&' && c != '='; }

inline void appendPercent(std::string& out, char c) {
    const auto byte = static_cast<unsigned char>(c);
    out += '%';
    out += upperHexDigits[byte >> 4U];
    out += upperHexDigits[byte & 15U];
}

/// Appends `text` with every byte that is not `allowed` percent-encoded.
template <class Allowed>
void appendEncoded(std::string& out, std::string_view text, Allowed allowed) {
    for (const char c : text) {
        if (allowed(c)) {
            out += c;
        } else {
            appendPercent(out, c);
        }
    }
}

} // namespace zentavo::detail
