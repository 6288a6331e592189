#include "zentavo/inapp/Delivery.h"

#include "zentavo/foundation/Fault.h"
#include "zentavo/inapp/CampaignChoice.h"
#include "zentavo/inapp/DeliveryResponse.h"

namespace zentavo {

Delivery::Delivery(std::shared_ptr<Zentavo> facade, std::string eventName, std::shared_ptr<const std::string> eventInfo)
    : facade_(std::move(facade)), eventInfo_(std::move(eventInfo)) {
    trace_.eventName = std::move(eventName);
}

void Delivery::ask(const CDPDeliveryOperation& operation) {
    const auto facade = facade_.lock();
    operation.deliver(
        facade->endpoints(), facade->getPortalId().value_or(""), facade->getPropsId(), eventInfo_,
        [self = shared_from_this()](const std::optional<std::string>& data, const std::optional<Error>& error) {
            self->handleAnswer(data, error);
        });
}

void Delivery::handleAnswer(const std::optional<std::string>& data, const std::optional<Error>& error) {
    const auto facade = facade_.lock();
    if (!facade) {
        return;
    }
    const Zentavo::State& state = *facade->state();
    if (!data || data->empty()) {
        return end(state, DeliveryTrace::Outcome::noAnswer, error ? error->message : "the answer is empty");
    }
    trace_.receivedBytes = data->size();
    auto response = DeliveryResponse::decode(*data);
    if (!response) {
        state.log->write(response.error().message);
        return end(state, DeliveryTrace::Outcome::undecodable, response.error().message);
    }
    auto chosen = chooseCampaign(*std::move(response), Frequency::load(state), *state.platform->random, *state.log,
                                 traced(state) ? &trace_ : nullptr);
    if (!chosen) {
        return end(state, DeliveryTrace::Outcome::nothingToShow);
    }
    content_ = *std::move(chosen);
    state.platform->userInterface()->mainQueue->async([self = shared_from_this()] {
        entryPoint("main queue", [&] {
            if (const auto living = self->facade_.lock()) {
                self->present(*living);
            }
        });
    });
}

void Delivery::present(Zentavo& facade) {
    const Zentavo::State& state = *facade.state();
    state.log->write("In-app message of story " + std::to_string(content_.storyId) +
                     " is dropped: no user interface is attached");
    end(state, DeliveryTrace::Outcome::noUserInterface);
}

bool Delivery::traced(const Zentavo::State& state) const {
    MutexLock lock(state.mutex);
    return state.log->enabled() || state.deliveryTraceCallback;
}

void Delivery::tell(const Zentavo::State& state, const DeliveryTrace& trace) {
    if (state.log->enabled()) {
        state.log->write(trace.text());
    }
    MutexLock lock(state.mutex);
    const auto callback = state.deliveryTraceCallback;
    lock.unlock();
    if (callback) {
        callback(trace);
    }
}

void Delivery::end(const Zentavo::State& state, DeliveryTrace::Outcome outcome, std::string problem) {
    trace_.outcome = outcome;
    trace_.problem = std::move(problem);
    tell(state, trace_);
}

} // namespace zentavo
