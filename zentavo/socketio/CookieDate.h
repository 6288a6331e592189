#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "zentavo/foundation/Export.h"

namespace zentavo::socketio {

/// The moment that a cookie's "Expires" names, read as servers are known to write it (RFC 6265, section 5.1.1): its
/// parts come in any order, and what is none of them is passed over. None for text that is no date, or is far too long
/// for one.
ZENTAVO_EXPORT std::optional<std::chrono::sys_seconds> cookieDate(std::string_view text);

} // namespace zentavo::socketio
