#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/inapp/CDPDeliveryOperation.h"
#include "zentavo/inapp/Delivery.h"

namespace zentavo {

namespace {

std::shared_ptr<CDPDeliveryOperation> deliveryOperation(Zentavo::State& state) {
    MutexLock lock(state.mutex);
    if (!state.cdpDeliveryOperation) {
        state.cdpDeliveryOperation =
            std::make_shared<CDPDeliveryOperation>(std::make_shared<HTTPClient>(state.platform, state.log));
    }
    return state.cdpDeliveryOperation;
}

} // namespace

void Zentavo::deliver(const std::string& body, const std::string& sessionId) {
    auto eventInfo = json::readMap(body);
    if (!eventInfo) {
        log("Error: " + eventInfo.error().message);
        return;
    }
    eventInfo->set("format", "json");
    if (Value* extra = eventInfo->find("extra"); extra != nullptr && extra->asMap() != nullptr && !sessionId.empty()) {
        extra->asMap()->set("session_id", sessionId);
    }
    const Value* name = eventInfo->find("en");
    auto text = json::write(*eventInfo);
    if (!text) {
        log("Error: " + text.error().message);
        return;
    }
    std::make_shared<Delivery>(shared_from_this(),
                               name != nullptr && name->asString() != nullptr ? *name->asString() : "",
                               std::make_shared<const std::string>(*std::move(text)))
        ->ask(*deliveryOperation(*state_));
}

} // namespace zentavo
