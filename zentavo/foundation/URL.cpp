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

std::string_view URL::scheme() const noexcept { return parts_->view(parts_->scheme); }
std::string_view URL::userInfo() const noexcept { return parts_->view(parts_->userInfo); }
std::string_view URL::host() const noexcept { return parts_->view(parts_->host); }
std::optional<std::uint16_t> URL::port() const noexcept { return parts_->port; }
std::string_view URL::path() const noexcept { return parts_->view(parts_->path); }

std::optional<std::string_view> URL::query() const noexcept {
    return parts_->hasQuery ? std::optional(parts_->view(parts_->query)) : std::nullopt;
}

std::optional<std::string_view> URL::fragment() const noexcept {
    return parts_->hasFragment ? std::optional(parts_->view(parts_->fragment)) : std::nullopt;
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
    if (!parts_->hasQuery) {
        return items;
    }
    std::string_view rest = parts_->view(parts_->query);
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
    Parts parts = *parts_;
    const std::size_t pathEnd = parts.path.begin + parts.path.length;
    parts.text.resize(pathEnd);
    // A reference of nothing but a query would be left without text, which is no URL; its query stays, empty.
    parts.hasQuery = !items.empty() || (pathEnd == 0 && !parts.hasFragment);
    if (parts.hasQuery) {
        parts.text += '?';
    }
    parts.query.begin = static_cast<std::uint32_t>(parts.text.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            parts.text += '&';
        }
        detail::appendEncoded(parts.text, items[i].name, detail::isQueryItemCharacter);
        if (items[i].value) {
            parts.text += '=';
            detail::appendEncoded(parts.text, *items[i].value, detail::isQueryItemCharacter);
        }
    }
    parts.query.length = static_cast<std::uint32_t>(parts.text.size()) - parts.query.begin;
    if (parts.hasFragment) {
        parts.text += '#';
        parts.fragment.begin = static_cast<std::uint32_t>(parts.text.size());
        parts.text += parts_->view(parts_->fragment);
    }
    return URL(std::move(parts));
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
