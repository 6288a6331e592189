#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "zentavo/core/Endpoints.h"
#include "zentavo/tracking/BaseOperation.h"

namespace zentavo {

/// The three requests to the delivery service. `portalId` chooses production or sandbox. Answers are handed on as they
/// came.
class CDPDeliveryOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;
    using Body = Result<std::shared_ptr<const std::string>>;

    /// Which campaigns are due for an event? `body` is the event's body with "format".
    void deliver(const Endpoints& endpoints, const std::string& portalId, const std::string& propsId, Body body,
                 HTTPClient::Completion completion) const;

    /// How is the campaign that `eventInfo` names laid out?
    void templateInfo(const Endpoints& endpoints, const std::string& portalId, const std::string& propsId,
                      const Map& eventInfo, HTTPClient::Completion completion) const;

    /// What proves to the service that a view-info request comes from this SDK.
    struct Proof {
        std::int64_t ts = 0; ///< milliseconds since 1970
        std::string sn;      ///< the signature, base64
        std::string ri;      ///< a UUID that no other request has
    };
    /// What does the campaign show? `body` is the text that was signed.
    void viewInfo(const Endpoints& endpoints, const std::string& portalId, const Proof& proof, std::string body,
                  HTTPClient::Completion completion) const;
};

} // namespace zentavo
