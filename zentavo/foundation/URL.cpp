#include "zentavo/foundation/URL.h"

#include "zentavo/foundation/URLCharacters.h"
#include "zentavo/foundation/UTF8.h"

namespace zentavo {
namespace {

std::string decodedOrAsIs(std::string_view text) {
    std::optional<std::string> decoded = URL::decodeComponent(text);
    return decoded && utf8::isValid(*decoded) ? *std::move(decoded) : std::string(text);
}

} // namespace

std::string_view URL::scheme() const noexcept { return view(scheme_); }
std::string_view URL::userInfo() const noexcept { return view(userInfo_); }
std::string_view URL::host() const noexcept { return view(host_); }
std::optional<std::uint16_t> URL::port() const noexcept { return port_; }
std::string_view URL::path() const noexcept { return view(path_); }

std::optional<std::string_view> URL::query() const noexcept {
    return hasQuery_ ? std::optional(view(query_)) : std::nullopt;
}

std::optional<std::string_view> URL::fragment() const noexcept {
    return hasFragment_ ? std::optional(view(fragment_)) : std::nullopt;
}

std::string URL::pathExtension() const {
    std::string_view component = path();
    while (component.ends_with('/')) {
        component.remove_suffix(1);
    }
    component.remove_prefix(component.rfind('/') + 1); // npos + 1 is 0
    const std::size_t dot = component.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return {};
    }
    std::string extension = decodedOrAsIs(component.substr(dot + 1));
    // Extensions end up in file names; an encoded "/" or NUL makes it something else than an extension.
    return extension.find_first_of(std::string_view("/\0", 2)) == std::string::npos ? extension : std::string();
}

std::vector<QueryItem> URL::queryItems() const {
    std::vector<QueryItem> items;
    if (!hasQuery_) {
        return items;
    }
    std::string_view rest = view(query_);
    for (bool more = true; more;) {
        const std::size_t end = rest.find('&');
        more = end != std::string_view::npos;
        const std::string_view item = rest.substr(0, end);
        rest.remove_prefix(more ? end + 1 : rest.size());

        const std::size_t equals = item.find('=');
        QueryItem& decoded = items.emplace_back();
        decoded.name = decodedOrAsIs(item.substr(0, equals));
        if (equals != std::string_view::npos) {
            decoded.value = decodedOrAsIs(item.substr(equals + 1));
        }
    }
    return items;
}

URL URL::withQueryItems(const std::vector<QueryItem>& items) const {
    URL url = *this;
    const std::size_t pathEnd = path_.begin + path_.length;
    url.text_.resize(pathEnd);
    // A reference of nothing but a query would be left without text, which is no URL; its query stays, empty.
    url.hasQuery_ = !items.empty() || (pathEnd == 0 && !hasFragment_);
    if (url.hasQuery_) {
        url.text_ += '?';
    }
    url.query_.begin = static_cast<std::uint32_t>(url.text_.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            url.text_ += '&';
        }
        detail::appendEncoded(url.text_, items[i].name, detail::isQueryItemCharacter);
        if (items[i].value) {
            url.text_ += '=';
            detail::appendEncoded(url.text_, *items[i].value, detail::isQueryItemCharacter);
        }
    }
    url.query_.length = static_cast<std::uint32_t>(url.text_.size()) - url.query_.begin;
    if (hasFragment_) {
        url.text_ += '#';
        url.fragment_.begin = static_cast<std::uint32_t>(url.text_.size());
        url.text_ += view(fragment_);
    }
    return url;
}

std::string URL::encodeComponent(std::string_view text) {
    std::string encoded;
    encoded.reserve(text.size());
    detail::appendEncoded(encoded, text, detail::isUnreserved);
    return encoded;
}

std::optional<std::string> URL::decodeComponent(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        const int byte = detail::hexByte(text, i + 1);
        if (byte < 0) {
            return std::nullopt;
        }
        decoded += static_cast<char>(byte);
        i += 2;
    }
    return decoded;
}

} // namespace zentavo
