#include "zentavo/inapp/CDPDeliveryOperation.h"

namespace zentavo {

void CDPDeliveryOperation::deliver(const Endpoints& endpoints, const std::string& portalId, const std::string& propsId,
                                   Body body, HTTPClient::Completion completion) const {
    URL target = urlWithQuery(url(endpoints.deliveryFor(portalId), "/interaction/v2"),
                              {{"portal_id", portalId}, {"prop_id", propsId}});
    if (const auto& log = httpClient->log(); log->enabled()) {
        log->write("DeliveryEvent: URL: " + target.text());
        log->write("DeliveryEvent: BODY: " + (body ? **body : body.error().message));
    }
    httpClient->request(std::move(target), "POST", std::move(body), std::move(completion));
}

void CDPDeliveryOperation::templateInfo(const Endpoints& endpoints, const std::string& portalId,
                                        const std::string& propsId, const Map& eventInfo,
                                        HTTPClient::Completion completion) const {
    httpClient->request(urlWithQuery(url(endpoints.deliveryFor(portalId), "/interaction/media-template/info"),
                                     {{"portal_id", portalId}, {"prop_id", propsId}}),
                        "POST", eventInfo, std::move(completion));
}

void CDPDeliveryOperation::viewInfo(const Endpoints& endpoints, const std::string& portalId, const Proof& proof,
                                    std::string body, HTTPClient::Completion completion) const {
    httpClient->request(urlWithQuery(url(endpoints.deliveryFor(portalId), "/interaction/media-template/view-info"),
                                     {{"ts", std::to_string(proof.ts)}, {"sn", proof.sn}, {"ri", proof.ri}}),
                        "POST", Result<std::string>(std::move(body)), std::move(completion));
}

} // namespace zentavo
