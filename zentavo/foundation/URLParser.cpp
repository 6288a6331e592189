#include <algorithm>
#include <charconv>
#include <functional>

#include "zentavo/foundation/URL.h"
#include "zentavo/foundation/URLCharacters.h"
#include "zentavo/foundation/UTF8.h"

namespace zentavo {
namespace {

constexpr std::size_t maximumBytes = 64U << 10U;

bool hasControlCharacter(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return (c >= 0 && c < 0x20) || c == 0x7F; });
}

/// What a "%" without two digits after it means.
enum class BrokenEscape { refuse, encode };

/// Appends a component as it stands in a URL: escapes and `allowed` characters as they are, all others encoded.
bool appendComponent(std::string& out, std::string_view component, const detail::CharacterSet& allowed,
                     BrokenEscape broken) {
    while (!component.empty()) {
        const auto plainEnd = std::find_if_not(component.begin(), component.end(), std::ref(allowed));
        const auto plain = static_cast<std::size_t>(plainEnd - component.begin());
        out += component.substr(0, plain);
        component.remove_prefix(plain);
        if (component.empty()) {
            break;
        }
        const bool isEscape = component[0] == '%';
        if (isEscape && detail::hexByte(component, 1) >= 0) {
            out += '%';
        } else if (isEscape && broken == BrokenEscape::refuse) {
            return false;
        } else {
            detail::appendPercent(out, component[0]);
        }
        component.remove_prefix(1);
    }
    return true;
}

/// A name or an IPv4 address. ASCII outside the RFC is refused, plain or escaped, because others that read the same
/// text could take it for the end of the host.
bool appendHostName(std::string& out, std::string_view host) {
    for (std::size_t i = 0; i < host.size(); ++i) {
        int byte = static_cast<unsigned char>(host[i]);
        if (host[i] == '%') {
            byte = detail::hexByte(host, i + 1);
            if (byte < 0) {
                return false;
            }
        }
        if (byte < 0x80 && !detail::isHostCharacter(static_cast<char>(byte))) {
            return false;
        }
    }
    return appendComponent(out, host, detail::isHostCharacter, BrokenEscape::refuse);
}

bool isIPv4(std::string_view text) {
    for (int part = 0; part < 4; ++part) {
        const std::string_view digits = text.substr(0, text.find('.'));
        unsigned number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        const bool leadingZero = digits.size() > 1 && digits[0] == '0';
        if (error != std::errc() || end != digits.data() + digits.size() || number > 255 || leadingZero) {
            return false;
        }
        text.remove_prefix(digits.size());
        if (part < 3 && !text.starts_with('.')) {
            return false;
        }
        text.remove_prefix(part < 3 ? 1 : 0);
    }
    return text.empty();
}

/// How many of the eight 16-bit groups `text` ("1:2:3", "1:2.3.4.5") fills, or -1.
int countIPv6Groups(std::string_view text) {
    int groups = 0;
    while (!text.empty()) {
        const std::string_view group = text.substr(0, text.find(':'));
        if (group.size() == text.size() && isIPv4(group)) {
            return groups + 2;
        }
        const bool hexadecimal =
            std::all_of(group.begin(), group.end(), [](char c) { return detail::hexDigit(c) >= 0; });
        if (group.empty() || group.size() > 4 || !hexadecimal || ++groups > 8) {
            return -1;
        }
        if (group.size() == text.size()) {
            break;
        }
        text.remove_prefix(group.size() + 1);
        if (text.empty()) {
            return -1;
        }
    }
    return groups;
}

bool isIPv6(std::string_view text) {
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos) {
        return countIPv6Groups(text) == 8;
    }
    const std::string_view left = text.substr(0, gap);
    const int before = countIPv6Groups(left);
    const int after = countIPv6Groups(text.substr(gap + 2));
    // The dotted form stands only at the end of the address.
    return before >= 0 && after >= 0 && before + after <= 7 && left.find('.') == std::string_view::npos;
}

/// The scheme in front of the first ":", "/", "?" or "#"; empty when there is none. None when a ":" comes first but no
/// scheme stands before it, which is no reference at all.
std::optional<std::string_view> schemeOf(std::string_view text) {
    const std::size_t end = text.find_first_of(":/?#");
    if (end == std::string_view::npos || text[end] != ':') {
        return std::string_view();
    }
    const std::string_view scheme = text.substr(0, end);
    if (scheme.empty() || !detail::isLetter(scheme[0]) ||
        !std::all_of(scheme.begin(), scheme.end(), std::ref(detail::isSchemeCharacter))) {
        return std::nullopt;
    }
    return scheme;
}

/// Cuts `text` at the first of `ends` and returns what stood before it; the end itself stays in `text`.
std::string_view takeUntil(std::string_view& text, std::string_view ends) {
    const auto end = std::find_first_of(text.begin(), text.end(), ends.begin(), ends.end());
    const std::string_view taken = text.substr(0, static_cast<std::size_t>(end - text.begin()));
    text.remove_prefix(taken.size());
    return taken;
}

} // namespace

std::optional<URL> URL::parse(std::string_view text) {
    if (text.empty() || text.size() > maximumBytes || hasControlCharacter(text) || !utf8::isValid(text)) {
        return std::nullopt;
    }
    const std::optional<std::string_view> scheme = schemeOf(text);
    if (!scheme) {
        return std::nullopt;
    }
    Parts url;
    url.text.reserve(text.size() + 16);
    if (!scheme->empty()) {
        for (const char c : *scheme) {
            url.text += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        }
        url.scheme = {0, static_cast<std::uint32_t>(scheme->size())};
        url.text += ':';
        text.remove_prefix(scheme->size() + 1);
    }

    if (text.starts_with("//")) {
        text.remove_prefix(2);
        if (!url.appendAuthority(takeUntil(text, "/?#"))) {
            return std::nullopt;
        }
    }
    if (url.isHTTP() && url.host.length == 0) {
        return std::nullopt;
    }

    const auto endOf = [&](std::size_t begin) {
        return Span{static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(url.text.size() - begin)};
    };
    std::size_t begin = url.text.size();
    if (!appendComponent(url.text, takeUntil(text, "?#"), detail::isPathCharacter, BrokenEscape::refuse)) {
        return std::nullopt;
    }
    url.path = endOf(begin);
    if (text.starts_with('?')) {
        url.text += '?';
        begin = url.text.size();
        appendComponent(url.text, takeUntil(text, "#").substr(1), detail::isQueryCharacter, BrokenEscape::encode);
        url.query = endOf(begin);
        url.hasQuery = true;
    }
    if (text.starts_with('#')) {
        url.text += '#';
        begin = url.text.size();
        if (!appendComponent(url.text, text.substr(1), detail::isQueryCharacter, BrokenEscape::refuse)) {
            return std::nullopt;
        }
        url.fragment = endOf(begin);
        url.hasFragment = true;
    }
    // Encoding makes text longer; what does not fit then would not parse again either.
    return url.text.size() <= maximumBytes ? std::optional(URL(std::move(url))) : std::nullopt;
}

bool URL::Parts::appendAuthority(std::string_view authority) {
    const auto mark = [this](Span& span, std::size_t begin) {
        span = {static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(text.size() - begin)};
    };
    text += "//";
    const std::size_t authorityBegin = text.size();
    std::size_t begin = authorityBegin;
    // The last "@" ends the user information, and those before it are encoded: whoever reads the text later finds the
    // same host.
    if (const std::size_t at = authority.rfind('@'); at != std::string_view::npos) {
        if (!appendComponent(text, authority.substr(0, at), detail::isUserInfoCharacter, BrokenEscape::refuse)) {
            return false;
        }
        mark(userInfo, begin);
        text += '@';
        authority.remove_prefix(at + 1);
    }

    begin = text.size();
    std::string_view rest;
    if (authority.starts_with('[')) {
        const std::size_t close = authority.find(']');
        if (close == std::string_view::npos || !isIPv6(authority.substr(1, close - 1))) {
            return false;
        }
        text += authority.substr(0, close + 1);
        host = {static_cast<std::uint32_t>(begin + 1), static_cast<std::uint32_t>(close - 1)};
        rest = authority.substr(close + 1);
    } else {
        rest = authority;
        if (!appendHostName(text, takeUntil(rest, ":"))) {
            return false;
        }
        mark(host, begin);
    }

    if (!rest.empty() && rest[0] != ':') {
        return false;
    }
    text += rest;
    if (const std::string_view digits = rest.substr(rest.empty() ? 0 : 1); !digits.empty()) {
        std::uint16_t number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error != std::errc() || end != digits.data() + digits.size()) {
            return false;
        }
        port = number;
    }
    // No host is fine ("file:///a"), but a user or a port of no host is not.
    return host.length > 0 || text.size() == authorityBegin;
}

} // namespace zentavo
