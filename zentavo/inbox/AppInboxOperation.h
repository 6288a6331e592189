#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/core/Endpoints.h"
#include "zentavo/tracking/BaseOperation.h"

namespace zentavo {

/// Fetches pages of messages from the inbox service.
class AppInboxOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;

    void fetch(const Endpoints& endpoints, const std::string& lookupId, const std::string& lookupType,
               std::int64_t portalId, const std::vector<std::string>& catalogs, std::int64_t destinationId,
               std::int64_t page, std::int64_t limit, HTTPClient::Completion completion) const;

    /// The URL of `path` at the inbox service; none where the host's base forms no URL, which ends a call silently.
    static std::optional<URL> url(const Endpoints& endpoints, std::string_view path);
};

} // namespace zentavo
