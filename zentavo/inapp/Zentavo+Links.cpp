#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/inapp/CDPDeliveryJsonOperation.h"
#include "zentavo/tracking/CDPEvent.h"

namespace zentavo {

namespace {

/// Keeps what the query of `url` says about the campaign that it came from, and forgets what it does not say.
void storeAttribution(platform::Preferences& store, const StoreKeys& keys, const URL& url) {
    Value utm;
    Value atm;
    for (const QueryItem& item : url.queryItems()) {
        const Value value = item.value ? Value(*item.value) : Value();
        if (item.name == "utm") {
            utm = value;
        } else if (item.name == "atm") {
            atm = value;
        }
    }
    store.set(keys.utm, std::move(utm)); // null removes
    store.set(keys.atm, std::move(atm));
}

/// What the answer to a click's tracking URL says. True when it was an object, and so was looked at.
bool storeClick(const Zentavo::State& state, const std::string& answer) {
    const auto value = json::read(answer);
    if (!value) {
        state.log->write("Error: " + value.error().message);
        return false;
    }
    const Map* click = value->asMap();
    const auto store = state.store();
    if (click == nullptr || !store) {
        return false;
    }
    const auto text = [&](const char* key) -> const std::string* {
        const Value* member = click->find(key);
        return member != nullptr ? member->asString() : nullptr;
    };
    if (const std::string* id = text("_clk_bc")) {
        store->set(state.keys.clkBc, *id);
    }
    const std::string* target = text("_clk_url");
    if (const auto url = target != nullptr ? URL::parse(*target) : std::nullopt) {
        storeAttribution(*store, state.keys, *url);
    }
    store->synchronise();
    return true;
}

} // namespace

std::shared_ptr<BaseOperation> Zentavo::baseOperation() { return BaseOperation::of(*state_); }

std::shared_ptr<CDPDeliveryJsonOperation> Zentavo::cdpDeliveryJsonOperation() {
    MutexLock lock(state_->mutex);
    if (!state_->cdpDeliveryJsonOperation) {
        state_->cdpDeliveryJsonOperation =
            std::make_shared<CDPDeliveryJsonOperation>(std::make_shared<HTTPClient>(state_->platform, state_->log));
    }
    return state_->cdpDeliveryJsonOperation;
}

void Zentavo::handleTrackingURL(const URL& url, std::function<void()> completion) {
    entryPoint("handleTrackingURL", [&] {
        // The instance lives until the answer, so that a click that got none is told again.
        baseOperation()->httpClient->get(url, [self = weak_from_this().lock(), completion = std::move(completion)](
                                                  const std::optional<std::string>& data, const std::optional<Error>&) {
            if (self && data && storeClick(*self->state_, *data) && completion) {
                completion();
            }
        });
    });
}

void Zentavo::handleViewTrackingUrl(const URL& url) {
    entryPoint("handleViewTrackingUrl", [&] { baseOperation()->httpClient->get(url, nullptr); });
}

void Zentavo::handleDeeplinkURL(const URL& url) {
    entryPoint("handleDeeplinkURL", [&] {
        if (const auto store = state_->store()) {
            storeAttribution(*store, state_->keys, url);
            store->synchronise();
        }
    });
}

void Zentavo::getMediaJson(const CDPEvent& event, MediaCallback completion) {
    entryPoint("getMediaJson", [&] {
        Map body = event.bodyMap();
        body.set("format", "json");
        processGetMediaJson(body, std::move(completion));
    });
}

void Zentavo::getMediaJson(const CDPEvent& event, std::string storyId, MediaCallback completion) {
    entryPoint("getMediaJson", [&] {
        Map body = event.bodyMap();
        body.set("format", "json");
        body.set("asm_journey_id", std::move(storyId));
        processGetMediaJson(body, std::move(completion));
    });
}

void Zentavo::processGetMediaJson(const Map& eventBody, MediaCallback completion) {
    entryPoint("processGetMediaJson", [&] {
        cdpDeliveryJsonOperation()->deliver(endpoints(), getPortalId().value_or(""), getPropsId(), eventBody,
                                            [log = state_->log, completion = std::move(completion)](
                                                const std::optional<std::string>& data, const std::optional<Error>&) {
                                                if (!data) {
                                                    return; // logged by the client
                                                }
                                                auto content = json::readMap(*data);
                                                if (!content) {
                                                    log->write("Error: " + content.error().message);
                                                } else if (completion) {
                                                    completion(*std::move(content));
                                                }
                                            });
    });
}

} // namespace zentavo
