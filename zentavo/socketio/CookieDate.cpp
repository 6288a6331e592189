#include "zentavo/socketio/CookieDate.h"

#include <algorithm>
#include <array>

namespace zentavo::socketio {

namespace {

constexpr std::size_t longestDate = 128;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether `c` stands between two parts.
bool parts(unsigned char c) {
    return c == '\t' || (c >= 0x20 && c <= 0x2f) || (c >= 0x3b && c <= 0x40) || (c >= 0x5b && c <= 0x60) ||
           (c >= 0x7b && c <= 0x7e);
}

/// Takes `fewest` to `most` digits that no further digit follows.
std::optional<int> takeDigits(std::string_view& text, std::size_t fewest, std::size_t most) {
    std::size_t length = 0;
    int number = 0;
    for (; length < text.size() && isDigit(text[length]); ++length) {
        if (length == most) {
            return std::nullopt;
        }
        number = number * 10 + (text[length] - '0');
    }
    if (length < fewest) {
        return std::nullopt;
    }
    text.remove_prefix(length);
    return number;
}

/// "hh:mm:ss", with anything but a digit behind it.
std::optional<std::chrono::seconds> timeOf(std::string_view token) {
    std::array<int, 3> fields{};
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i > 0) {
            if (!token.starts_with(':')) {
                return std::nullopt;
            }
            token.remove_prefix(1);
        }
        const auto number = takeDigits(token, 1, 2);
        if (!number) {
            return std::nullopt;
        }
        fields[i] = *number;
    }
    if (fields[0] > 23 || fields[1] > 59 || fields[2] > 59) {
        return std::chrono::seconds(-1); // a time, but none that there is
    }
    return std::chrono::hours(fields[0]) + std::chrono::minutes(fields[1]) + std::chrono::seconds(fields[2]);
}

std::optional<unsigned> monthOf(std::string_view token) {
    constexpr std::array<std::string_view, 12> names = {"jan", "feb", "mar", "apr", "may", "jun",
                                                        "jul", "aug", "sep", "oct", "nov", "dec"};
    const auto found = std::find_if(names.begin(), names.end(), [&](std::string_view name) {
        return token.size() >= name.size() &&
               std::equal(name.begin(), name.end(), token.begin(), [](char a, char b) { return a == (b | 0x20); });
    });
    return found == names.end() ? std::nullopt : std::optional(static_cast<unsigned>(found - names.begin()) + 1);
}

int fullYear(int year) { return year >= 100 ? year : year + (year >= 70 ? 1900 : 2000); }

} // namespace

std::optional<std::chrono::sys_seconds> cookieDate(std::string_view text) {
    if (text.size() > longestDate) {
        return std::nullopt;
    }
    std::optional<std::chrono::seconds> time;
    std::optional<int> day;
    std::optional<unsigned> month;
    std::optional<int> year;
    while (!text.empty()) {
        const auto end = std::find_if(text.begin(), text.end(), parts);
        const auto token = text.substr(0, static_cast<std::size_t>(end - text.begin()));
        text.remove_prefix(std::min(text.size(), token.size() + 1));
        auto digits = token; // each part is the first token that can be it
        if (!time && (time = timeOf(token))) {
            continue;
        }
        if (!day && (day = takeDigits(digits, 1, 2))) {
            continue;
        }
        if (!month && (month = monthOf(token))) {
            continue;
        }
        if (!year) {
            digits = token;
            year = takeDigits(digits, 2, 4);
        }
    }
    if (!time || *time < std::chrono::seconds(0) || !day || !month || !year || fullYear(*year) < 1601) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(fullYear(*year)), std::chrono::month(*month),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    return date.ok() ? std::optional(std::chrono::sys_days(date) + *time) : std::nullopt;
}

} // namespace zentavo::socketio
