#include "zentavo/inbox/AppInboxOperation.h"

namespace zentavo {

std::optional<URL> AppInboxOperation::url(const Endpoints& endpoints, std::string_view path) {
    auto url = URL::parse(endpoints.inbox + "/access/api/app-inbox" + std::string(path));
    return url && url->isHTTP() ? std::move(url) : std::nullopt;
}

void AppInboxOperation::fetch(const Endpoints& endpoints, const std::string& lookupId, const std::string& lookupType,
                              std::int64_t portalId, const std::vector<std::string>& catalogs,
                              std::int64_t destinationId, std::int64_t page, std::int64_t limit,
                              HTTPClient::Completion completion) const {
    auto target = url(endpoints, "/message/performance");
    if (!target) {
        return;
    }
    const Map body{{"lookupId", lookupId},
                   {"lookupType", lookupType},
                   {"portalId", portalId},
                   {"catalogs", List(catalogs.begin(), catalogs.end())},
                   {"destinationId", destinationId},
                   {"page", page},
                   {"limit", limit},
                   {"source", "mobile"}};
    httpClient->request(*std::move(target), "POST", body, std::move(completion));
}

} // namespace zentavo
