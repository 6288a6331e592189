#include "zentavo/platform/Bundle.h"

namespace zentavo::platform {

std::optional<std::string> Bundle::infoText(std::string_view key) const {
    auto value = info(key);
    if (!value || value->asString() == nullptr) {
        return std::nullopt;
    }
    return std::move(*value->asString());
}

} // namespace zentavo::platform
