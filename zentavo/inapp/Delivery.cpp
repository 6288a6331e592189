#include "zentavo/inapp/Delivery.h"

#include "zentavo/foundation/Fault.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/Printable.h"
#include "zentavo/inapp/CampaignChoice.h"
#include "zentavo/inapp/DeliveryResponse.h"
#include "zentavo/inapp/Template.h"
#include "zentavo/inapp/TemplateCodeMode.h"

namespace zentavo {

namespace {

/// Takes the flag back where presenting ends early, by a fault too.
class FlagGuard {
public:
    explicit FlagGuard(Atomic<bool>& flag) : flag_(&flag) {}
    ~FlagGuard() {
        if (flag_ != nullptr) {
            flag_->set(false);
        }
    }
    FlagGuard(const FlagGuard&) = delete;
    FlagGuard& operator=(const FlagGuard&) = delete;
    void keep() noexcept { flag_ = nullptr; }

private:
    Atomic<bool>* flag_;
};

} // namespace

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
    if (!data) {
        return end(state, DeliveryTrace::Outcome::noAnswer, error ? error->message : "there is no answer");
    }
    trace_.receivedBytes = data->size();
    auto response = DeliveryResponse::decode(*data);
    if (!response) {
        const std::string problem = printable(response.error().message);
        state.log->write(problem);
        return end(state, DeliveryTrace::Outcome::undecodable, problem);
    }
    auto chosen = chooseCampaign(*std::move(response), Frequency::load(state), *state.platform->random, *state.log,
                                 traced(state) ? &trace_ : nullptr);
    if (!chosen) {
        return end(state, DeliveryTrace::Outcome::nothingToShow);
    }
    content_ = *std::move(chosen);
    const auto userInterface = state.platform->userInterface();
    userInterface->mainQueue->async([self = shared_from_this(), userInterface] {
        entryPoint("main queue", [&] {
            if (const auto living = self->facade_.lock()) {
                self->present(living, userInterface);
            }
        });
    });
}

void Delivery::present(const std::shared_ptr<Zentavo>& facade,
                       const std::shared_ptr<const platform::UserInterface>& userInterface) {
    Zentavo::State& state = *facade->state();
    if (!userInterface->views || !userInterface->webViews) {
        return drop(state, "no user interface is attached");
    }
    if (!state.isShowingTemplate.compareAndSet(false, true)) {
        return end(state, DeliveryTrace::Outcome::alreadyShowing);
    }
    FlagGuard guard(state.isShowingTemplate);
    // Between the choice and now another answer may have used up the limit; nothing counts between here and `record`.
    if (auto capped = Frequency::check(Frequency::load(state), content_)) {
        return holdBack(state, *std::move(capped));
    }
    if (const auto last = state.currentTemplate) {
        // A host that clears the flag by hand still sees one message at a time.
        last->close(DeliveryTrace::ClosedBy::replaced);
        state.isShowingTemplate.set(true);
    }
    auto page = userInterface->webViews->makeWebView();
    if (!page) {
        return drop(state, "the system cannot show web pages");
    }
    std::shared_ptr<TemplatePresenter> presenter;
    if (content_.isCodeMode()) {
        auto event = json::readMap(*eventInfo_);
        presenter = std::make_shared<TemplateCodeMode>(facade, userInterface, std::move(page), content_,
                                                       event ? *std::move(event) : Map());
    } else {
        presenter = std::make_shared<Template>(facade, userInterface, std::move(page), content_);
    }
    if (!presenter->show()) {
        return drop(state, "there is no window to show it over");
    }
    state.currentTemplate = presenter;
    guard.keep();

    trace_.outcome = DeliveryTrace::Outcome::presented;
    presenter->onClosed = [weak = facade_, trace = trace_](DeliveryTrace::ClosedBy closedBy) mutable {
        if (const auto living = weak.lock()) {
            trace.closedBy = closedBy;
            tell(*living->state(), trace);
        }
    };
    Frequency::record(state, Frequency::Subject::of(content_), "impression");
    // Last: it calls the host, and what the host throws must not lose the count.
    tell(state, trace_);
}

void Delivery::holdBack(const Zentavo::State& state, DeliveryTrace::Capped capped) {
    logCapped(*state.log, capped);
    if (trace_.chosen) {
        trace_.campaigns[*trace_.chosen].capped = std::move(capped);
        trace_.chosen.reset();
    }
    end(state, DeliveryTrace::Outcome::nothingToShow);
}

void Delivery::drop(const Zentavo::State& state, const char* why) {
    state.log->write("In-app message of story " + std::to_string(content_.storyId) + " is dropped: " + why);
    end(state, DeliveryTrace::Outcome::noUserInterface, why);
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

void Delivery::end(const Zentavo::State& state, DeliveryTrace::Outcome outcome, std::string_view problem) {
    trace_.outcome = outcome;
    trace_.problem = printable(problem);
    tell(state, trace_);
}

} // namespace zentavo
