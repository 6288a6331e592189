#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/tracking/CDPEvent.h"
#include "zentavo/tracking/CDPEventOperation.h"
#include "zentavo/tracking/EventBody.h"

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
    const auto account = state_->account();
    const auto& configuration = account->configuration;
    if (!configuration) {
        fatalError("an event cannot be sent before the first activation");
    }

    const std::string& portalId = configuration->portalId;
    const EventBody body(*state_, account, event, portalId, configuration->propsId);
    const auto operation = cdpOperation();
    auto text = operation->text(body);
    // What waits for the answer is the text that waits anyway, not the event.
    std::shared_ptr<const std::string> sent = text ? *text : nullptr;
    // The instance lives until the answer, so that an event that got none is repeated.
    operation->send(std::move(text), account->endpoints, portalId, body.propId(),
                    [self = weak_from_this().lock(), sent = std::move(sent)](const std::optional<std::string>& data,
                                                                             const std::optional<Error>&) {
                        if (self) {
                            self->handleEventAnswer(sent, data);
                        }
                    });
}

void Zentavo::handleEventAnswer(const std::shared_ptr<const std::string>& body,
                                const std::optional<std::string>& data) {
    if (!data || data->empty()) {
        return;
    }
    std::string sessionId;
    if (const auto answer = json::readMap(*data); !answer) {
        log("Error: " + answer.error().message);
    } else if (const Value* session = answer->find("session_id");
               session != nullptr && session->asString() != nullptr) {
        sessionId = *session->asString();
    }
    if (body && isDelivery()) {
        deliver(*body, sessionId);
    }
}

} // namespace zentavo
