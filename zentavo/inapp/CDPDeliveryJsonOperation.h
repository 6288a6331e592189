#pragma once

#include <string>

#include "zentavo/core/Endpoints.h"
#include "zentavo/tracking/BaseOperation.h"

namespace zentavo {

/// Asks the delivery service for content that the host shows itself. There is no sandbox for it.
class CDPDeliveryJsonOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;

    void deliver(const Endpoints& endpoints, const std::string& portalId, const std::string& propsId, const Map& body,
                 HTTPClient::Completion completion) const;
};

} // namespace zentavo
