#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zentavo/foundation/Result.h"
#include "zentavo/inapp/WebContent.h"

namespace zentavo {

/// The delivery service's answer to an event: the campaigns that are due. One campaign that cannot be read makes the
/// whole answer unreadable.
struct DeliveryResponse {
    /// Under their names in the answer, which mean nothing here; neither does their order.
    std::vector<std::pair<std::string, WebContent>> webContents;

    static Result<DeliveryResponse> decode(std::string_view json);
};

} // namespace zentavo
