#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "devserver/LoggedRequest.h"
#include "devserver/QueryReader.h"

namespace zentavo::devserver {

/// Which logged requests somebody asks for; a default one takes them all.
struct RequestFilter {
    /// Only requests with a higher number.
    std::uint64_t since = 0;
    /// With or without the twin's prefix: "/event" means both twins.
    std::optional<std::string> path;
    std::optional<std::string> event;
    std::optional<Twin> twin;
    bool problemsOnly = false;

    static RequestFilter from(QueryReader& reader);
    bool matches(const LoggedRequest& request) const;
};

} // namespace zentavo::devserver
