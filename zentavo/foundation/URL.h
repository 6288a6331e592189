#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// One name and value of a query, decoded. An item without "=" has no value.
struct QueryItem {
    std::string name;
    std::optional<std::string> value;

    friend bool operator==(const QueryItem&, const QueryItem&) = default;
};

/// An absolute or relative reference of RFC 3986, kept as text. What is no URL does not become one: there is no
/// invalid object of this type. Characters outside the RFC (blanks, "ü", "{") are percent-encoded as UTF-8 when the
/// URL is made; "//" inside a path is kept; empty text is no URL.
class ZENTAVO_EXPORT URL {
public:
    /// None for empty text, control characters, invalid UTF-8, a broken "%" escape outside the query (inside it the "%"
    /// counts as a character to encode), a host or port that cannot be one, "http" or "https" without a host, or more
    /// than 64 KiB. Parsing the text of a URL gives the same URL.
    static std::optional<URL> parse(std::string_view text);

    const std::string& text() const noexcept { return text_; }

    /// Lower case, and so is it in `text`; empty for a relative reference.
    std::string_view scheme() const noexcept;
    std::string_view userInfo() const noexcept;
    /// Without the brackets of an IPv6 literal; empty when there is none.
    std::string_view host() const noexcept;
    std::optional<std::uint16_t> port() const noexcept;
    /// Still percent-encoded.
    std::string_view path() const noexcept;
    /// Without "?", still percent-encoded; none when there is no "?".
    std::optional<std::string_view> query() const noexcept;
    std::optional<std::string_view> fragment() const noexcept;
    /// What follows the last "." of the last path component, decoded, trailing slashes aside: "appex" of
    /// "/a/b.appex/". Empty where there is none, as in "/.profile".
    std::string pathExtension() const;

    bool isHTTP() const noexcept { return scheme() == "http" || scheme() == "https"; }

    /// The query split at "&" and the first "=", percent-decoded; "+" stays "+". A name or value whose escapes are not
    /// UTF-8 stays encoded, so that it can travel as text.
    std::vector<QueryItem> queryItems() const;
    /// This URL with its whole query replaced by `items`, in their order; `& = % #` and blanks in names and values are
    /// encoded, `+ : / ? @` stay. No items: no query. The result may be longer than `parse` accepts.
    URL withQueryItems(const std::vector<QueryItem>& items) const;

    friend bool operator==(const URL& a, const URL& b) noexcept { return a.text_ == b.text_; }

    /// Text with everything outside RFC 3986's unreserved characters percent-encoded.
    static std::string encodeComponent(std::string_view text);
    /// None when a "%" is not followed by two hexadecimal digits.
    static std::optional<std::string> decodeComponent(std::string_view text);

private:
    struct Span {
        std::uint32_t begin = 0;
        std::uint32_t length = 0;
    };
    URL() = default;
    bool parseAuthority(std::string_view authority);
    std::string_view view(Span span) const noexcept { return std::string_view(text_).substr(span.begin, span.length); }

    std::string text_;
    Span scheme_, userInfo_, host_, path_, query_, fragment_;
    std::optional<std::uint16_t> port_;
    bool hasQuery_ = false;
    bool hasFragment_ = false;
};

} // namespace zentavo
