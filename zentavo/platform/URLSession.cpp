#include "zentavo/platform/URLSession.h"

#include <string_view>

namespace zentavo::platform {

bool operator==(const URLRequest& a, const URLRequest& b) {
    const bool sameBody = a.body == b.body || (a.body && b.body && *a.body == *b.body);
    return sameBody && a.url == b.url && a.method == b.method && a.headers == b.headers;
}

std::size_t URLRequest::hash() const noexcept {
    const std::hash<std::string_view> hashText;
    std::size_t result = hashText(url.text());
    if (body) {
        result = result * 31 + hashText(*body);
    }
    return result * 31 + hashText(method);
}

} // namespace zentavo::platform
