#pragma once

#include "zentavo/tracking/BaseOperation.h"
#include "zentavo/tracking/EventBody.h"

namespace zentavo {

/// Sends events to the collection service, one request an event.
class CDPEventOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;

    /// `portalId` chooses production or sandbox.
    void send(const EventBody& body, const Endpoints& endpoints, const std::string& portalId,
              HTTPClient::Completion completion) const;
};

} // namespace zentavo
