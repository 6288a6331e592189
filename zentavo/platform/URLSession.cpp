#include "zentavo/platform/URLSession.h"

namespace zentavo::platform {

bool operator==(const URLRequest& a, const URLRequest& b) {
    const bool sameBody = a.body == b.body || (a.body && b.body && *a.body == *b.body);
    return sameBody && a.url == b.url && a.method == b.method && a.headers == b.headers;
}

} // namespace zentavo::platform
