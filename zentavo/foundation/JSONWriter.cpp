#include "zentavo/foundation/JSONWriter.h"

#include <charconv>
#include <cmath>

#include "zentavo/foundation/Digits.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/JSONPath.h"
#include "zentavo/foundation/JSONScan.h"
#include "zentavo/foundation/UTF8.h"

namespace zentavo {
namespace {

/// Appends the escaped form of a character that a JSON string cannot hold as it is.
void appendEscape(std::string& out, char c) {
    switch (c) {
    case '"':
        out += "\\\"";
        return;
    case '\\':
        out += "\\\\";
        return;
    case '\b':
        out += "\\b";
        return;
    case '\f':
        out += "\\f";
        return;
    case '\n':
        out += "\\n";
        return;
    case '\r':
        out += "\\r";
        return;
    case '\t':
        out += "\\t";
        return;
    default:
        out += "\\u00";
        out += detail::lowerHexDigits[static_cast<unsigned char>(c) >> 4U];
        out += detail::lowerHexDigits[static_cast<unsigned char>(c) & 15U];
    }
}

} // namespace

inline void JSONWriter::separate() {
    if (needsComma_) {
        out_ += ',';
    }
}

/// Appends what separates it from the value before, `text` as a JSON string, and `after` unless that is NUL. False when
/// `text` cannot be written; the failure is noted then.
inline bool JSONWriter::appendQuoted(std::string_view text, char after) {
    if (text.size() <= detail::shortJSON) { // nearly all of them; put together here, they cost the string one append
        char part[detail::shortJSON + 4];
        char* at = part;
        *at = ',';
        at += needsComma_ ? 1 : 0;
        *at++ = '"';
        if (detail::copyPlainJSON(at, text)) {
            at += text.size();
            *at++ = '"';
            *at = after;
            at += after != '\0' ? 1 : 0;
            out_.append(part, static_cast<std::size_t>(at - part));
            return true;
        }
    }
    separate();
    if (!appendEscaped(text)) {
        return false;
    }
    if (after != '\0') {
        out_ += after;
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
    out_ += bracket;
    needsComma_ = false;
}

void JSONWriter::end(char bracket) {
    if (failed_) {
        return;
    }
    --depth_;
    out_ += bracket;
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
    out_ += jsonText;
    needsComma_ = true;
}

Result<void> JSONWriter::finish() const { return failed_ ? Result<void>(error_) : Result<void>(); }

/// Appends `text` as a JSON string, part by part: the general case.
bool JSONWriter::appendEscaped(std::string_view text) {
    out_ += '"';
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
            out_ += text.substr(runStart, i - runStart);
            appendEscape(out_, text[i]);
            runStart = ++i;
        }
    }
    out_ += text.substr(runStart);
    out_ += '"';
    return true;
}

void JSONWriter::fail(std::string_view reason) {
    failed_ = true;
    // The text so far tells the place; keeping a path while writing would cost every event.
    error_.message = detail::pathAtEnd(std::string_view(out_).substr(start_));
    error_.message += error_.message.empty() ? "" : ": ";
    error_.message += "JSON takes no ";
    error_.message += reason;
}

} // namespace zentavo
