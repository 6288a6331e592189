#include "zentavo/tracking/CDPEventOperation.h"

namespace zentavo {

void CDPEventOperation::send(const EventBody& body, const Endpoints& endpoints, const std::string& portalId,
                             HTTPClient::Completion completion) const {
    const URL target = urlWithQuery(url(endpoints.collectionFor(portalId), "/event"),
                                    {{"resp_type", "json"}, {"portal_id", portalId}, {"prop_id", body.propId()}});
    auto text = body.text();
    if (const auto& log = httpClient->log(); log->enabled()) {
        log->write("TrackEvent: URL: " + target.text());
        log->write("TrackEvent: BODY: " + (text ? *text : text.error().message));
    }
    httpClient->request(target, "POST", std::move(text), std::move(completion));
}

} // namespace zentavo
