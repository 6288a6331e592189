#include "zentavo/inapp/CDPDeliveryJsonOperation.h"

#include "zentavo/foundation/JSON.h"

namespace zentavo {

void CDPDeliveryJsonOperation::deliver(const Endpoints& endpoints, const std::string& portalId,
                                       const std::string& propsId, const Map& body,
                                       HTTPClient::Completion completion) const {
    URL target =
        urlWithQuery(url(endpoints.delivery, "/interaction/app"), {{"portal_id", portalId}, {"prop_id", propsId}});
    auto text = json::write(body);
    if (const auto& log = httpClient->log(); log->enabled()) {
        log->write("DeliveryEvent: URL: " + target.text());
        log->write("DeliveryEvent: BODY: " + (text ? *text : text.error().message));
    }
    httpClient->request(std::move(target), "POST", std::move(text), std::move(completion));
}

} // namespace zentavo
