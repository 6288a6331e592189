#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/inapp/CDPDeliveryOperation.h"
#include "zentavo/inapp/DeliveryTrace.h"
#include "zentavo/inapp/WebContent.h"

namespace zentavo {

/// One question to the delivery service and what becomes of its answer: asked, read, capped and chosen on the worker,
/// shown on the main queue. Lives as long as one of these steps is to come.
class Delivery : public std::enable_shared_from_this<Delivery> {
public:
    /// `eventInfo` is the event's body with "format".
    Delivery(std::shared_ptr<Zentavo> facade, std::string eventName, std::shared_ptr<const std::string> eventInfo);

    void ask(const CDPDeliveryOperation& operation);

private:
    void handleAnswer(const std::optional<std::string>& data, const std::optional<Error>& error);
    /// On the main queue of `userInterface`. One that was attached since has another, perhaps on another thread.
    void present(const std::shared_ptr<Zentavo>& facade,
                 const std::shared_ptr<const platform::UserInterface>& userInterface);
    /// What was chosen has reached a limit since.
    void holdBack(const Zentavo::State& state, DeliveryTrace::Capped capped);
    void drop(const Zentavo::State& state, const char* why);
    bool traced(const Zentavo::State& state) const;
    /// Logs the trace, and hands it to the host.
    static void tell(const Zentavo::State& state, const DeliveryTrace& trace);
    void end(const Zentavo::State& state, DeliveryTrace::Outcome outcome, std::string_view problem = {});

    /// Not kept alive by a question on its way.
    const std::weak_ptr<Zentavo> facade_;
    const std::shared_ptr<const std::string> eventInfo_;
    DeliveryTrace trace_;
    WebContent content_;
};

} // namespace zentavo
