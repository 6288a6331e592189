#include "zentavo/inapp/DeliveryResponse.h"

#include "zentavo/foundation/JSON.h"

namespace zentavo {

Result<DeliveryResponse> DeliveryResponse::decode(std::string_view text) {
    const auto map = json::readMap(text);
    if (!map) {
        return map.error();
    }
    DeliveryResponse response;
    KeyedDecoder decoder(*map);
    response.webContents = decoder.nested("webContents", [](KeyedDecoder& contents) {
        decltype(response.webContents) all;
        all.reserve(contents.source().size());
        for (const auto& [name, value] : contents.source()) {
            all.emplace_back(name, contents.nested(name, WebContent::decode));
            if (contents.failed()) {
                break;
            }
        }
        return all;
    });
    if (auto failure = decoder.failure()) {
        return *std::move(failure);
    }
    return response;
}

} // namespace zentavo
