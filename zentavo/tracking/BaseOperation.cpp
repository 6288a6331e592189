#include "zentavo/tracking/BaseOperation.h"

#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo {

std::shared_ptr<BaseOperation> BaseOperation::of(Zentavo::State& state) {
    MutexLock lock(state.mutex);
    if (!state.baseOperation) {
        state.baseOperation = std::make_shared<BaseOperation>(std::make_shared<HTTPClient>(state.platform, state.log));
    }
    return state.baseOperation;
}

URL BaseOperation::url(const std::string& base, std::string_view path) {
    const std::string text = base + std::string(path);
    auto url = URL::parse(text);
    if (!url || !url->isHTTP()) {
        fatalError("an endpoint is no URL: \"" + text + "\"");
    }
    return *std::move(url);
}

} // namespace zentavo
