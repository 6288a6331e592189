#include "zentavo/socketio/CookieJar.h"

#include <algorithm>
#include <charconv>

#include "zentavo/socketio/CookieDate.h"

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

/// The seconds of a "Max-Age", or `before` where it is no number.
std::optional<std::int64_t> ageOf(std::string_view text, std::optional<std::int64_t> before) {
    std::int64_t seconds = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (fault == std::errc::invalid_argument || end != text.data() + text.size()) {
        return before;
    }
    if (fault == std::errc::result_out_of_range) {
        return text.front() == '-' ? 0 : longestAge;
    }
    return seconds;
}

} // namespace

void CookieJar::take(std::string_view setCookie, std::chrono::nanoseconds now,
                     std::chrono::system_clock::time_point civil) {
    const auto pair = takePart(setCookie);
    const auto equals = pair.find('=');
    if (equals == std::string_view::npos || equals == 0 || pair.size() > longestCookie || !fitsIntoHeader(pair)) {
        return;
    }
    Cookie cookie{
        std::string(trimmed(pair.substr(0, equals))), std::string(trimmed(pair.substr(equals + 1))), false, {}};
    std::optional<std::int64_t> age; // seconds; goes before the date
    std::optional<std::chrono::sys_seconds> date;
    while (!setCookie.empty()) {
        const auto attribute = takePart(setCookie);
        const auto split = attribute.find('=');
        const auto name = trimmed(attribute.substr(0, split));
        const auto value = split == std::string_view::npos ? std::string_view() : trimmed(attribute.substr(split + 1));
        if (equalsIgnoringCase(name, "secure")) {
            cookie.secure = true;
        } else if (equalsIgnoringCase(name, "max-age")) {
            age = ageOf(value, age);
        } else if (equalsIgnoringCase(name, "expires")) {
            if (const auto read = cookieDate(value)) {
                date = read;
            }
        }
    }
    if (!age && date) {
        age = (*date - std::chrono::floor<std::chrono::seconds>(civil)).count();
    }
    if (age) {
        cookie.expires = now + std::chrono::seconds(std::clamp<std::int64_t>(*age, 0, longestAge));
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
