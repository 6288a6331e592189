#pragma once

#include <span>

#include "zentavo/foundation/Export.h"
#include "zentavo/websocket/Frame.h"

namespace zentavo::websocket {

/// Masks `bytes` in place, or takes the mask off again. `position` is where in its frame the first of them stands.
ZENTAVO_EXPORT void applyMask(std::span<char> bytes, MaskKey key, std::uint64_t position) noexcept;

} // namespace zentavo::websocket
