#pragma once

#include <cstdint>
#include <memory>
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
/// URL is made; "//" inside a path is kept; empty text is no URL. Copies share their text.
class ZENTAVO_EXPORT URL {
public:
    /// None for empty text, control characters, invalid UTF-8, a broken "%" escape outside the query (inside it the "%"
    /// counts as a character to encode), a host or port that cannot be one, "http" or "https" without a host, or more
    /// than 64 KiB. Parsing the text of a URL gives the same URL.
    static std::optional<URL> parse(std::string_view text);

    // No moves: there is no URL without text, not even one that was moved from.
    URL(const URL&) = default;
    URL& operator=(const URL&) = default;

    const std::string& text() const noexcept { return parts_->text; }

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

    bool isHTTP() const noexcept { return parts_->isHTTP(); }

    /// The query split at "&" and the first "=", percent-decoded; "+" stays "+". A name or value whose escapes are not
    /// UTF-8 stays encoded, so that it can travel as text.
    std::vector<QueryItem> queryItems() const;
    /// This URL with its whole query replaced by `items`, in their order; `& = % #` and blanks in names and values are
    /// encoded, `+ : / ? @` stay. No items: no query. The result may be longer than `parse` accepts.
    URL withQueryItems(const std::vector<QueryItem>& items) const;

    friend bool operator==(const URL& a, const URL& b) noexcept { return a.text() == b.text(); }

    /// Text with everything outside RFC 3986's unreserved characters percent-encoded.
    static std::string encodeComponent(std::string_view text);
    /// None when a "%" is not followed by two hexadecimal digits.
    static std::optional<std::string> decodeComponent(std::string_view text);

private:
    struct Span {
        std::uint32_t begin = 0;
        std::uint32_t length = 0;
    };
    /// The text, and where in it the components stand.
    struct Parts {
        std::string text;
        Span scheme, userInfo, host, path, query, fragment;
        std::optional<std::uint16_t> port;
        bool hasQuery = false;
        bool hasFragment = false;

        /// Appends "//" and what follows it up to the path, and notes its components; false where they are none.
        bool appendAuthority(std::string_view authority);
        bool isHTTP() const noexcept { return view(scheme) == "http" || view(scheme) == "https"; }
        std::string_view view(Span span) const noexcept {
            return std::string_view(text).substr(span.begin, span.length);
        }
    };
    explicit URL(Parts parts) : parts_(std::make_shared<const Parts>(std::move(parts))) {}

    std::shared_ptr<const Parts> parts_;
};

} // namespace zentavo
