#include "zentavo/websocket/CloseCode.h"

namespace zentavo::websocket {

bool maySend(CloseCode code) noexcept {
    const auto number = static_cast<std::uint16_t>(code);
    return (number >= 1000 && number <= 1003) || (number >= 1007 && number <= 1014) ||
           (number >= 3000 && number <= 4999);
}

} // namespace zentavo::websocket
