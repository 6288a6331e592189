#include "devserver/IncomingRequest.h"

#include <algorithm>
#include <cctype>

#include "devserver/Text.h"

namespace zentavo::devserver {

std::string_view IncomingRequest::header(std::string_view name) const noexcept {
    const auto sameLetter = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
    };
    for (const auto& [key, value] : headers) {
        if (std::ranges::equal(key, name, sameLetter)) {
            return value;
        }
    }
    return {};
}

bool IncomingRequest::isForeign() const {
    const std::string_view origin = header("Origin");
    return !origin.empty() && origin != "http://" + std::string(header("Host"));
}

void IncomingRequest::setTarget(std::string_view target) {
    path = utf8Text(target.substr(0, target.find('?')));
    // A host is put in front: a target such as "//x/y" would otherwise read as one.
    const std::optional<URL> url = URL::parse("http://localhost" + utf8Text(target));
    targetReadable = url && target.starts_with('/');
    if (!targetReadable) {
        return;
    }
    query = url->queryItems();
    for (QueryItem& item : query) {
        item.name = utf8Text(item.name);
        if (item.value) {
            item.value = utf8Text(*item.value);
        }
    }
}

} // namespace zentavo::devserver
