#include "zentavo/core/ZentavoState.h"

#include "zentavo/foundation/JSON.h"

namespace zentavo {

Zentavo::State::State(std::shared_ptr<platform::Platform> system)
    : platform(std::move(system)), keys(platform->bundles->main()->identifier()),
      log(std::make_shared<DebugLog>(platform->clock, platform->console)), contextInstance(*platform) {}

Zentavo::State::~State() {
    if (currentTemplate || currentPush) {
        // Takes the views down, and only the main queue may.
        platform->userInterface()->mainQueue->async(
            [last = std::move(currentTemplate), push = std::move(currentPush)]() mutable {
                last.reset();
                push.reset();
            });
    }
}

void Zentavo::State::setContext(Map context) {
    auto text = json::write(context);
    changeAccount([&](Account& account) {
        account.context = std::move(context);
        account.contextText = std::move(text);
    });
}

} // namespace zentavo
