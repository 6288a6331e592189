#include "zentavo/foundation/JSONWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "zentavo/foundation/Digits.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/JSONPath.h"
#include "zentavo/foundation/JSONScan.h"
#include "zentavo/foundation/UTF8.h"

namespace zentavo {
namespace {

/// The letter that stands for a control character behind a backslash; NUL where only its number does.
constexpr char escapeLetter(char c) noexcept {
    switch (c) {
    case '"':
    case '\\':
        return c;
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return '\0';
    }
}

} // namespace

void JSONWriter::grow(std::size_t bytes) {
    const std::size_t length = this->length();
    out_.resize(std::max({out_.capacity(), length + bytes, 2 * length}));
    at_ = out_.data() + length;
    end_ = out_.data() + out_.size();
}

inline void JSONWriter::put(std::string_view text) {
    std::memcpy(room(text.size()), text.data(), text.size());
    at_ += text.size();
}

inline void JSONWriter::separate() {
    if (needsComma_) {
        put(',');
    }
}

/// Appends what separates it from the value before, `text` as a JSON string, and `after` unless that is NUL. False when
/// `text` cannot be written; the failure is noted then.
inline bool JSONWriter::appendQuoted(std::string_view text, char after) {
    if (text.size() <= detail::shortJSON) { // nearly all of them
        char* at = room(detail::shortJSON + 4);
        *at = ',';
        at += needsComma_ ? 1 : 0;
        *at++ = '"';
        if (detail::copyPlainJSON(at, text)) {
            at += text.size();
            *at++ = '"';
            *at = after;
            at += after != '\0' ? 1 : 0;
            at_ = at;
            return true;
        }
    }
    separate();
    if (!appendEscaped(text)) {
        return false;
    }
    if (after != '\0') {
        put(after);
    }
    return true;
}

void JSONWriter::begin(char bracket) {
    if (failed_) {
        return;
    }
    separate();
    if (depth_ == json::Limits{}.maximumDepth) {
        fail("more than " + std::to_string(depth_) + " levels of lists and maps");
        return;
    }
    ++depth_;
    put(bracket);
    needsComma_ = false;
}

void JSONWriter::end(char bracket) {
    if (failed_) {
        return;
    }
    --depth_;
    put(bracket);
    needsComma_ = true;
}

void JSONWriter::key(std::string_view name) {
    if (failed_) {
        return;
    }
    if (appendQuoted(name, ':')) {
        needsComma_ = false;
    }
}

void JSONWriter::value(std::string_view text) {
    if (failed_) {
        return;
    }
    needsComma_ = appendQuoted(text, '\0');
}

void JSONWriter::value(const Value& value) {
    if (const auto* text = value.asString()) {
        this->value(std::string_view(*text));
    } else if (const auto* integer = value.asInteger()) {
        this->value(*integer);
    } else if (const auto* real = value.asDouble()) {
        this->value(*real);
    } else if (const auto* map = value.asMap()) {
        this->value(*map);
    } else if (const auto* list = value.asList()) {
        this->value(*list);
    } else if (const auto* flag = value.asBool()) {
        this->value(*flag);
    } else {
        null();
    }
}

void JSONWriter::value(const Map& map) {
    beginMap();
    for (const Map::Entry& entry : map) {
        if (failed_) {
            return;
        }
        key(entry.key);
        value(entry.value);
    }
    endMap();
}

void JSONWriter::value(const List& list) {
    beginList();
    for (const Value& element : list) {
        if (failed_) {
            return;
        }
        value(element);
    }
    endList();
}

void JSONWriter::value(std::int64_t number) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    raw(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

void JSONWriter::value(double number) {
    if (failed_) {
        return;
    }
    if (!std::isfinite(number)) {
        separate();
        fail("number that is not finite");
        return;
    }
    char digits[40];
    char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    const std::string_view written(digits, static_cast<std::size_t>(end - digits));
    if (written.find_first_of(".e") == std::string_view::npos) {
        *end++ = '.';
        *end++ = '0';
    }
    raw(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

void JSONWriter::raw(std::string_view jsonText) {
    if (failed_) {
        return;
    }
    separate();
    put(jsonText);
    needsComma_ = true;
}

Result<std::string> JSONWriter::finish() {
    if (failed_) {
        return std::move(error_);
    }
    out_.resize(length());
    return std::move(out_);
}

/// Appends `text` as a JSON string, part by part: the general case.
bool JSONWriter::appendEscaped(std::string_view text) {
    put('"');
    std::size_t runStart = 0;
    std::size_t i = 0;
    while (i < text.size()) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) {
            const std::size_t length = utf8::characterLength(text, i);
            if (length == 0) {
                fail("text that is not UTF-8");
                return false;
            }
            i += length;
        } else if (detail::isPlainJSON(text[i])) {
            i += detail::plainPrefix(text.substr(i));
        } else {
            put(text.substr(runStart, i - runStart));
            appendEscape(text[i]);
            runStart = ++i;
        }
    }
    put(text.substr(runStart));
    put('"');
    return true;
}

void JSONWriter::appendEscape(char c) {
    put('\\');
    if (const char letter = escapeLetter(c)) {
        put(letter);
        return;
    }
    put("u00");
    put(detail::lowerHexDigits[static_cast<unsigned char>(c) >> 4U]);
    put(detail::lowerHexDigits[static_cast<unsigned char>(c) & 15U]);
}

void JSONWriter::fail(std::string_view reason) {
    failed_ = true;
    // The text so far tells the place; keeping a path while writing would cost every event.
    error_.message = detail::pathAtEnd(std::string_view(out_.data(), length()));
    error_.message += error_.message.empty() ? "" : ": ";
    error_.message += "JSON takes no ";
    error_.message += reason;
}

} // namespace zentavo
