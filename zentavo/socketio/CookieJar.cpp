#include "zentavo/socketio/CookieJar.h"

#include <algorithm>
#include <charconv>

namespace zentavo::socketio {

namespace {

constexpr std::size_t mostCookies = 50;
constexpr std::size_t longestCookie = 4096;
constexpr std::int64_t longestAge = 400LL * 24 * 3600; // in seconds; the nanoseconds of more could overflow

std::string_view trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return (x | 0x20) == (y | 0x20); });
}

bool fitsIntoHeader(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c > 0x1f && c != 0x7f && c != ';'; });
}

/// Takes the text in front of the next ';'.
std::string_view takePart(std::string_view& text) {
    const auto end = text.find(';');
    const auto part = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return trimmed(part);
}

} // namespace

void CookieJar::take(std::string_view setCookie, std::chrono::nanoseconds now) {
    const auto pair = takePart(setCookie);
    const auto equals = pair.find('=');
    if (equals == std::string_view::npos || equals == 0 || pair.size() > longestCookie || !fitsIntoHeader(pair)) {
        return;
    }
    Cookie cookie{
        std::string(trimmed(pair.substr(0, equals))), std::string(trimmed(pair.substr(equals + 1))), false, {}};
    while (!setCookie.empty()) {
        const auto attribute = takePart(setCookie);
        const auto split = attribute.find('=');
        const auto name = attribute.substr(0, split);
        const auto value = split == std::string_view::npos ? std::string_view() : attribute.substr(split + 1);
        if (equalsIgnoringCase(name, "secure")) {
            cookie.secure = true;
        } else if (equalsIgnoringCase(name, "max-age")) {
            std::int64_t seconds = 0;
            if (std::from_chars(value.data(), value.data() + value.size(), seconds).ec == std::errc()) {
                cookie.expires = now + std::chrono::seconds(std::clamp<std::int64_t>(seconds, 0, longestAge));
            }
        } else if (equalsIgnoringCase(name, "expires") && !cookie.expires && value.find("1970") != value.npos) {
            cookie.expires = now; // how servers take cookies back
        }
    }
    std::erase_if(cookies_,
                  [&](const Cookie& old) { return old.name == cookie.name || (old.expires && *old.expires <= now); });
    if (cookies_.size() < mostCookies && (!cookie.expires || *cookie.expires > now)) {
        cookies_.push_back(std::move(cookie));
    }
}

std::string CookieJar::header(bool secure, std::chrono::nanoseconds now) const {
    std::string header;
    for (const auto& cookie : cookies_) {
        if ((!cookie.secure || secure) && (!cookie.expires || *cookie.expires > now)) {
            header += (header.empty() ? "" : "; ") + cookie.name + "=" + cookie.value;
        }
    }
    return header;
}

} // namespace zentavo::socketio
