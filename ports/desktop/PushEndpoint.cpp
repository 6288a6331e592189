#include "ports/desktop/PushEndpoint.h"

#include "zentavo/foundation/URL.h"

namespace zentavo::desktop {

Result<std::string> readPushEndpoint(std::string_view text) {
    if (text.size() > maximumEndpointBytes) {
        return Error{"the endpoint for pushes is too long"};
    }
    const auto url = URL::parse(text);
    if (!url || (url->scheme() != "http" && url->scheme() != "https")) {
        return Error{"the endpoint for pushes is no web address"};
    }
    if (url->fragment()) {
        return Error{"the endpoint for pushes has a fragment of its own"};
    }
    if (url->text().size() > maximumEndpointBytes) { // what had to be encoded made it longer
        return Error{"the endpoint for pushes is too long"};
    }
    return url->text();
}

bool isPushToken(std::string_view text) {
    const std::size_t end = text.find('#');
    return readPushEndpoint(text.substr(0, end)).ok() &&
           (end == std::string_view::npos || text.size() - end <= maximumKeyBytes);
}

} // namespace zentavo::desktop
