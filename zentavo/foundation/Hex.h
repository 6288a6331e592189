#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/Export.h"

namespace zentavo::hex {

/// Two lower-case digits a byte, nothing between them.
ZENTAVO_EXPORT std::string encode(std::span<const std::uint8_t> bytes);
/// Digits of either case; none for an odd count or anything else.
ZENTAVO_EXPORT std::optional<std::vector<std::uint8_t>> decode(std::string_view text);

} // namespace zentavo::hex
