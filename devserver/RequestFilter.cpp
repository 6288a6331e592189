#include "devserver/RequestFilter.h"

#include <limits>

namespace zentavo::devserver {

RequestFilter RequestFilter::from(QueryReader& reader) {
    RequestFilter filter;
    filter.since =
        static_cast<std::uint64_t>(reader.number("since", 0, std::numeric_limits<std::int64_t>::max()).value_or(0));
    filter.path = reader.text("path");
    filter.event = reader.text("event");
    if (const auto twin = reader.word("twin", {"production", "sandbox"})) {
        filter.twin = *twin == "sandbox" ? Twin::sandbox : Twin::production;
    }
    filter.problemsOnly = reader.flag("problems");
    return filter;
}

bool RequestFilter::matches(const LoggedRequest& request) const {
    return request.number > since && (!path || *path == request.request.path || *path == request.servicePath()) &&
           (!event || *event == request.findings.event) && (!twin || *twin == request.twin) &&
           (!problemsOnly || !request.findings.problems.empty());
}

} // namespace zentavo::devserver
