#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// Text with parts that a server chose, fit for one line of a log: control characters become "?", and what is beyond
/// `longest` bytes is left out, never in the middle of a character.
ZENTAVO_EXPORT std::string printable(std::string_view text, std::size_t longest = 400);

} // namespace zentavo
