#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/tracking/CDPEvent.h"
#include "zentavo/tracking/CDPEventOperation.h"

namespace zentavo {

std::shared_ptr<CDPEventOperation> Zentavo::cdpOperation() {
    MutexLock lock(state_->mutex);
    if (!state_->cdpOperation) {
        state_->cdpOperation =
            std::make_shared<CDPEventOperation>(std::make_shared<HTTPClient>(state_->platform, state_->log));
    }
    return state_->cdpOperation;
}

void Zentavo::track(const CDPEvent& event) {
    entryPoint("track", [&] { send(event); });
}

void Zentavo::trackScreen(std::string name, std::string title, std::string type) {
    entryPoint("trackScreen", [&] {
        CDPEvent event(*this, "view_screenview");
        event.setEventProperties(
            {{"screen_name", std::move(name)}, {"screen_label", std::move(title)}, {"screen_type", std::move(type)}});
        send(event);
    });
}

void Zentavo::sendFirstInstall() { send(CDPEvent(*this, "app_install")); }

void Zentavo::send(const CDPEvent& event) {
    auto account = state_->account();
    const auto& configuration = account->configuration;
    const std::string portalId = configuration ? configuration->portalId : "";
    std::optional<std::string> propsId;
    if (configuration) {
        propsId = configuration->propsId;
    } else if (account->store) {
        propsId = account->store->string(state_->keys.propsId);
    }
    if (!propsId || !account->store) {
        fatalError("an event cannot be sent before the first activation");
    }

    const Endpoints& endpoints = account->endpoints;
    const EventBody body(*state_, account, event, portalId, *propsId);
    cdpOperation()->send(body, endpoints, portalId,
                         [log = state_->log](std::optional<std::string> data, std::optional<Error> error) {
                             if (error) {
                                 log->write("Error: " + error->message);
                             } else if (data && !data->empty()) {
                                 if (const auto answer = json::readMap(*data); !answer) {
                                     log->write("Error: " + answer.error().message);
                                 }
                             }
                         });
}

} // namespace zentavo
