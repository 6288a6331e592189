#include "devserver/Text.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace zentavo::devserver {

namespace {

constexpr std::size_t quotedBytes = 60;

/// How many bytes the character at the front of `bytes` has; 0 when no valid one stands there.
std::size_t characterLength(std::string_view bytes) noexcept {
    const auto at = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
    const std::uint8_t first = at(0);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || bytes.size() < length) {
        return 0;
    }
    // Overlong forms, surrogates and code points beyond U+10FFFF show in the second byte.
    const std::uint8_t low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const std::uint8_t high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (at(1) < low || at(1) > high) {
        return 0;
    }
    for (std::size_t i = 2; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

} // namespace

bool isUTF8(std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        if (length == 0) {
            return false;
        }
        bytes.remove_prefix(length);
    }
    return true;
}

std::string utf8Text(std::string_view bytes) {
    if (isUTF8(bytes)) {
        return std::string(bytes);
    }
    std::string text;
    while (!bytes.empty()) {
        const std::size_t length = characterLength(bytes);
        text += length > 0 ? bytes.substr(0, length) : std::string_view("\xEF\xBF\xBD");
        bytes.remove_prefix(length > 0 ? length : 1);
    }
    return text;
}

std::string oneLine(std::string_view bytes) {
    std::string line(bytes);
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto byte = static_cast<std::uint8_t>(line[i]);
        if (byte < 0x20 || byte == 0x7F) {
            line[i] = '?';
        } else if (byte == 0xC2 && i + 1 < line.size() && static_cast<std::uint8_t>(line[i + 1]) < 0xA0) {
            // U+0080 to U+009F, which some terminals obey as they do escape sequences.
            line.replace(i, 2, "?");
        }
    }
    return line;
}

std::string inQuotes(std::string_view name) {
    std::string text = utf8Text(name.substr(0, quotedBytes + 4));
    if (name.size() > quotedBytes) {
        std::size_t end = quotedBytes;
        while (end > 0 && (static_cast<std::uint8_t>(text[end]) & 0xC0) == 0x80) {
            --end;
        }
        text = text.substr(0, end) + "…";
    }
    return '"' + text + '"';
}

std::string utcTimestamp(std::chrono::system_clock::time_point time) {
    using namespace std::chrono;
    const auto milliseconds = duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count();
    const std::time_t seconds = static_cast<std::time_t>(milliseconds / 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    std::array<char, 24> day{};
    const std::size_t length = std::strftime(day.data(), day.size(), "%Y-%m-%dT%H:%M:%S", &parts);
    std::array<char, 8> fraction{};
    std::snprintf(fraction.data(), fraction.size(), ".%03dZ", static_cast<int>(milliseconds % 1000));
    return std::string(day.data(), length) + fraction.data();
}

} // namespace zentavo::devserver
