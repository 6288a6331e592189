#pragma once

#include <cstdint>

#include "zentavo/tracking/BaseOperation.h"

namespace zentavo {

/// Tells the push service which device a push token belongs to. Made for one call.
class RegisterDeviceOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;

    void identify(const std::string& pushBase, std::int64_t portalId, const std::string& token,
                  const std::string& deviceId, HTTPClient::Completion completion) const {
        const Map body{{"portal_id", portalId}, {"identifier", token}, {"channel", "ios"}, {"device_id", deviceId}};
        httpClient->request(url(pushBase, "/api/app/identify"), "POST", body, std::move(completion));
    }
};

} // namespace zentavo
