#include "zentavo/tracking/BaseOperation.h"

#include "zentavo/foundation/Fault.h"

namespace zentavo {

URL BaseOperation::url(const std::string& base, std::string_view path) {
    const std::string text = base + std::string(path);
    auto url = URL::parse(text);
    if (!url || !url->isHTTP()) {
        fatalError("an endpoint is no URL: \"" + text + "\"");
    }
    return *std::move(url);
}

} // namespace zentavo
