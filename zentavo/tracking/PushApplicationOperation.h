#pragma once

#include "zentavo/core/Configuration.h"
#include "zentavo/tracking/BaseOperation.h"

namespace zentavo {

/// Tells the push service that the application was launched. Made for one call.
class PushApplicationOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;

    void launched(const std::string& pushBase, const Configuration& configuration, const std::string& deviceId,
                  HTTPClient::Completion completion) const {
        const Map body{{"portal_id", configuration.portalId},
                       {"prop_id", configuration.propsId},
                       {"application_id", configuration.applicationId},
                       {"channel", "ios"},
                       {"device_id", deviceId}};
        httpClient->request(url(pushBase, "/api/application"), "POST", body, std::move(completion));
    }
};

} // namespace zentavo
