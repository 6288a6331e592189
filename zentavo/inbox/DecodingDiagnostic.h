#pragma once

#include <string>

#include "zentavo/foundation/DecodingFailure.h"

namespace zentavo {

/// What a page that cannot be read leaves on the console: a line by the kind of failure and, for the kinds that have a
/// place, a second one with the way to it.
std::string diagnostic(const DecodingFailure& failure);

} // namespace zentavo
