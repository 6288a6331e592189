#include "zentavo/websocket/UTF8Validator.h"

#include <cstring>

namespace zentavo::websocket {
namespace {

using Vector [[gnu::vector_size(16)]] = std::uint8_t;
using Mask [[gnu::vector_size(16)]] = signed char;
using Words [[gnu::vector_size(16)]] = std::uint64_t;
constexpr std::size_t width = 16;

inline Vector load(const char* at) noexcept {
    Vector vector;
    std::memcpy(&vector, at, sizeof vector);
    return vector;
}

inline bool isAscii(const char* at) noexcept {
    std::uint64_t words[2];
    std::memcpy(words, at, sizeof words);
    return ((words[0] | words[1]) & 0x8080808080808080U) == 0;
}

// 64 bytes at once, for the long runs.
inline bool isAscii64(const char* at) noexcept {
    const Vector all = load(at) | load(at + 16) | load(at + 32) | load(at + 48);
    Words words;
    std::memcpy(&words, &all, sizeof words);
    return ((words[0] | words[1]) & 0x8080808080808080U) == 0;
}

/// Sixteen bytes that do not start a text: each is judged by the three before it. Nonzero lanes are faults.
inline Mask judge(const char* at) noexcept {
    const Vector here = load(at);
    const Vector one = load(at - 1);
    const Vector two = load(at - 2);
    const Vector three = load(at - 3);
    const Mask continues = (here & 0xC0) == 0x80;
    const Mask mustContinue = (one >= 0xC0) | (two >= 0xE0) | (three >= 0xF0);
    Mask faults = continues ^ mustContinue;
    // What no text has, and second bytes that make a form overlong, a surrogate, or more than Unicode.
    faults |= (here == 0xC0) | (here == 0xC1) | (here >= 0xF5);
    faults |= ((one == 0xE0) & (here < 0xA0)) | ((one == 0xED) & (here >= 0xA0));
    faults |= ((one == 0xF0) & (here < 0x90)) | ((one == 0xF4) & (here >= 0x90));
    return faults;
}

inline bool any(Mask mask) noexcept {
    Words words;
    std::memcpy(&words, &mask, sizeof words);
    return (words[0] | words[1]) != 0;
}

/// How many bytes before `end` belong to a character that goes on behind it. At least three bytes lie before `end`.
inline std::size_t unfinished(const char* end) noexcept {
    const auto byte = [end](int back) { return static_cast<std::uint8_t>(end[-back]); };
    return byte(1) >= 0xC0 ? 1 : byte(2) >= 0xE0 ? 2 : byte(3) >= 0xF0 ? 3 : 0;
}

} // namespace

bool UTF8Validator::step(std::uint8_t byte) noexcept {
    if (missing_ != 0) {
        valid_ = byte >= low_ && byte <= high_;
        --missing_;
        low_ = 0x80;
        high_ = 0xBF;
        return valid_;
    }
    if (byte < 0x80) {
        return true;
    }
    valid_ = byte >= 0xC2 && byte <= 0xF4;
    missing_ = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    low_ = byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80;
    high_ = byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF;
    return valid_;
}

bool UTF8Validator::feed(std::string_view part) noexcept {
    const char* at = part.data();
    const char* const begin = at;
    const char* const end = at + part.size();
    const auto left = [&] { return static_cast<std::size_t>(end - at); };
    while (valid_ && at != end) {
        if (missing_ == 0 && left() >= width) {
            while (left() >= 64 && isAscii64(at)) {
                at += 64;
            }
            while (left() >= width && isAscii(at)) {
                at += width;
            }
            if (left() >= width && at - begin >= 3) {
                // The bytes before `at` are whole characters, which makes them fit to judge by.
                Mask faults{};
                while (left() >= 2 * width && !isAscii(at)) {
                    faults |= judge(at) | judge(at + width);
                    at += 2 * width;
                }
                if (left() >= width && !isAscii(at)) {
                    faults |= judge(at);
                    at += width;
                }
                if (any(faults)) {
                    return valid_ = false;
                }
                at -= unfinished(at);
            }
            if (at == end) {
                break;
            }
        }
        step(static_cast<std::uint8_t>(*at++));
    }
    return valid_;
}

} // namespace zentavo::websocket
