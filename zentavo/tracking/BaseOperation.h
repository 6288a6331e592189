#pragma once

#include <memory>
#include <string>
#include <vector>

#include "zentavo/core/Zentavo.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/tracking/HTTPClient.h"

namespace zentavo {

/// What the requests of one service have in common: a client of their own, and URLs with a query.
class BaseOperation {
public:
    explicit BaseOperation(std::shared_ptr<HTTPClient> client) : httpClient(std::move(client)) {}

    /// The one with which an instance fires tracking URLs, so that what counts and repeats failures is one. Made when
    /// first asked for.
    static std::shared_ptr<BaseOperation> of(Zentavo::State& state);

    const std::shared_ptr<HTTPClient> httpClient;

protected:
    /// `base` followed by `path`; a fault when that is no URL, for the SDK itself supplies both.
    static URL url(const std::string& base, std::string_view path);
    /// `url` with `items` as its query.
    static URL urlWithQuery(const URL& url, const std::vector<QueryItem>& items) { return url.withQueryItems(items); }
};

} // namespace zentavo
