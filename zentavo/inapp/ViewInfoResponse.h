#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"

namespace zentavo {

/// What a hand-written campaign shows, and what is told when it does.
struct ViewInfoResponse {
    struct ContentHtml {
        std::string html;
    };
    struct TrackingUrls {
        std::optional<std::string> impression;
        std::optional<std::string> viewable;
    };
    struct DataContent {
        ContentHtml content;
        TrackingUrls trackingUrls;
    };

    DataContent data;

    static Result<ViewInfoResponse> decode(std::string_view json);
};

} // namespace zentavo
