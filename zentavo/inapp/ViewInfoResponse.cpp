#include "zentavo/inapp/ViewInfoResponse.h"

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

namespace {

ViewInfoResponse::ContentHtml decodeContent(KeyedDecoder& decoder) { return {decoder.string("html")}; }

ViewInfoResponse::TrackingUrls decodeTrackingUrls(KeyedDecoder& decoder) {
    return {decoder.optionalString("impression"), decoder.optionalString("viewable")};
}

ViewInfoResponse::DataContent decodeData(KeyedDecoder& decoder) {
    return {decoder.nested("content", decodeContent), decoder.nested("trackingUrls", decodeTrackingUrls)};
}

} // namespace

Result<ViewInfoResponse> ViewInfoResponse::decode(std::string_view text) {
    const auto map = json::readMap(text);
    if (!map) {
        return map.error();
    }
    KeyedDecoder decoder(*map);
    ViewInfoResponse response{decoder.nested("data", decodeData)};
    if (auto failure = decoder.failure()) {
        return *std::move(failure);
    }
    return response;
}

} // namespace zentavo
