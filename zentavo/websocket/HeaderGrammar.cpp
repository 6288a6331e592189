#include "zentavo/websocket/HeaderGrammar.h"

#include <algorithm>

#include "zentavo/foundation/UTF8.h"

namespace zentavo::websocket::grammar {
namespace {

constexpr std::size_t maximumParts = 64;

char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool isBlank(char c) noexcept { return c == ' ' || c == '\t'; }

/// Walks over an extension header.
class Cursor {
public:
    explicit Cursor(std::string_view text) : text_(text) {}

    bool atEnd() {
        skipBlanks();
        return text_.empty();
    }
    bool take(char c) {
        skipBlanks();
        if (text_.empty() || text_.front() != c) {
            return false;
        }
        text_.remove_prefix(1);
        return true;
    }
    std::string_view token() {
        skipBlanks();
        const auto end = std::find_if_not(text_.begin(), text_.end(), isTokenCharacter);
        const auto taken = text_.substr(0, static_cast<std::size_t>(end - text_.begin()));
        text_.remove_prefix(taken.size());
        return taken;
    }
    /// A token, or a quoted string that holds one. Empty when there is neither.
    std::string value() {
        if (!take('"')) {
            return std::string(token());
        }
        std::string value;
        while (!text_.empty() && text_.front() != '"') {
            if (text_.front() == '\\') {
                text_.remove_prefix(1);
            }
            if (!text_.empty()) {
                value += text_.front();
                text_.remove_prefix(1);
            }
        }
        return take('"') && isToken(value) ? value : std::string();
    }

private:
    void skipBlanks() {
        while (!text_.empty() && isBlank(text_.front())) {
            text_.remove_prefix(1);
        }
    }
    std::string_view text_;
};

} // namespace

bool isTokenCharacter(char c) noexcept {
    return (c >= '0' && c <= '9') || (lower(c) >= 'a' && lower(c) <= 'z') ||
           (c != '\0' && std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos);
}

bool isToken(std::string_view text) noexcept {
    return !text.empty() && std::all_of(text.begin(), text.end(), isTokenCharacter);
}

bool isFieldValue(std::string_view text) noexcept {
    return std::all_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return c == '\t' || (byte >= 0x20 && byte != 0x7F);
    });
}

std::string readable(std::string_view text) {
    constexpr std::size_t longest = 200;
    std::string result;
    while (!text.empty()) {
        const std::size_t length = utf8::characterLength(text, 0);
        const auto first = static_cast<unsigned char>(text.front());
        const bool plain = length > 1 || (length == 1 && first >= 0x20 && first != 0x7F);
        const std::string_view shown = plain ? text.substr(0, length) : "?";
        if (result.size() + shown.size() > longest) {
            break;
        }
        result += shown;
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return lower(x) == lower(y); });
}

std::string_view trim(std::string_view text) noexcept {
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::vector<std::string_view> splitList(std::string_view text) {
    std::vector<std::string_view> elements;
    while (!text.empty()) {
        const std::size_t comma = std::min(text.find(','), text.size());
        if (const auto element = trim(text.substr(0, comma)); !element.empty()) {
            elements.push_back(element);
        }
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return elements;
}

bool listHas(std::string_view list, std::string_view token) {
    const auto elements = splitList(list);
    return std::any_of(elements.begin(), elements.end(),
                       [&](std::string_view element) { return equalsIgnoringCase(element, token); });
}

std::optional<std::vector<Extension>> parseExtensions(std::string_view text) {
    std::vector<Extension> extensions;
    std::size_t parts = 0;
    Cursor cursor(text);
    while (!cursor.atEnd()) {
        if (cursor.take(',')) {
            continue;
        }
        Extension extension{cursor.token(), {}};
        if (extension.name.empty() || ++parts > maximumParts) {
            return std::nullopt;
        }
        while (cursor.take(';')) {
            Parameter parameter{cursor.token(), std::nullopt};
            if (parameter.name.empty() || ++parts > maximumParts) {
                return std::nullopt;
            }
            if (cursor.take('=')) {
                parameter.value = cursor.value();
                if (parameter.value->empty()) {
                    return std::nullopt;
                }
            }
            extension.parameters.push_back(std::move(parameter));
        }
        extensions.push_back(std::move(extension));
        if (!cursor.atEnd() && !cursor.take(',')) {
            return std::nullopt;
        }
    }
    return extensions;
}

} // namespace zentavo::websocket::grammar
