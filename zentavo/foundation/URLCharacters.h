#pragma once

#include <string>
#include <string_view>

#include "zentavo/foundation/Digits.h"

/// The character classes of RFC 3986. Not installed.
namespace zentavo::detail {

constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) noexcept { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

/// A question to every character of every URL, answered by a look into a table.
class CharacterSet {
public:
    template <class Predicate>
    explicit constexpr CharacterSet(Predicate contains) {
        for (unsigned c = 0; c < sizeof members_; ++c) {
            members_[c] = contains(static_cast<char>(c));
        }
    }
    constexpr bool operator()(char c) const noexcept { return members_[static_cast<unsigned char>(c)]; }

private:
    bool members_[256] = {};
};

constexpr bool isOneOf(char c, std::string_view set) noexcept { return set.find(c) != std::string_view::npos; }

inline constexpr CharacterSet isUnreserved([](char c) { return isLetter(c) || isDigit(c) || isOneOf(c, "-._~"); });
inline constexpr CharacterSet isSchemeCharacter([](char c) { return isLetter(c) || isDigit(c) || isOneOf(c, "+-."); });
inline constexpr CharacterSet isHostCharacter([](char c) { return isUnreserved(c) || isOneOf(c, "!$&'()*+,;="); });
inline constexpr CharacterSet isUserInfoCharacter([](char c) { return isHostCharacter(c) || c == ':'; });
inline constexpr CharacterSet isPathCharacter([](char c) { return isHostCharacter(c) || isOneOf(c, ":@/"); });
/// Also those of the fragment.
inline constexpr CharacterSet isQueryCharacter([](char c) { return isPathCharacter(c) || c == '?'; });
inline constexpr CharacterSet isQueryItemCharacter([](char c) { return isQueryCharacter(c) && c != '&' && c != '='; });

inline void appendPercent(std::string& out, char c) {
    const auto byte = static_cast<unsigned char>(c);
    out += '%';
    out += upperHexDigits[byte >> 4U];
    out += upperHexDigits[byte & 15U];
}

/// Appends `text` with every byte that is not `allowed` percent-encoded.
inline void appendEncoded(std::string& out, std::string_view text, const CharacterSet& allowed) {
    for (const char c : text) {
        if (allowed(c)) {
            out += c;
        } else {
            appendPercent(out, c);
        }
    }
}

} // namespace zentavo::detail
