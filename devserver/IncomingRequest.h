#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zentavo/foundation/URL.h"

namespace zentavo::devserver {

/// One request as it came, before anybody has judged it. All text but the body is valid UTF-8.
struct IncomingRequest {
    static constexpr std::size_t maximumBody = 8U << 20U;

    enum class Body { complete, tooLarge, brokenOff };

    std::string method;
    /// Percent-encoded, as sent, without the query.
    std::string path;
    std::vector<QueryItem> query;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    Body bodyState = Body::complete;
    /// False for a target that is no path with a query; `query` is empty then.
    bool targetReadable = true;

    /// The first header of that name (any case), or empty.
    std::string_view header(std::string_view name) const noexcept;
    /// Whether a page of another site sends it. A browser says which page it is, unless it is a plain visit.
    bool isForeign() const;
    /// Splits a request target as it stands in the request line.
    void setTarget(std::string_view target);
};

} // namespace zentavo::devserver
