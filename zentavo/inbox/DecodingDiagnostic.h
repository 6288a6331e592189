#pragma once

#include <string>
#include <string_view>

#include "zentavo/foundation/DecodingFailure.h"

namespace zentavo {

/// What a page that cannot be read leaves on the console: a line by the kind of failure and, for the kinds that have a
/// place, a second one with the way to it.
std::string diagnostic(const DecodingFailure& failure);

/// Text with parts that a server chose, fit for one line of a log: control characters become "?", and what is beyond a
/// few hundred bytes is left out.
std::string printable(std::string_view text);

} // namespace zentavo
