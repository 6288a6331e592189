#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// The integer that `text` is: an optional "+" or "-", then decimal digits and nothing else. None for anything else,
/// empty text, blanks and numbers beyond 64 bits included.
ZENTAVO_EXPORT std::optional<std::int64_t> decimalInteger(std::string_view text) noexcept;

} // namespace zentavo
