#pragma once

#include <string>
#include <vector>

#include "zentavo/foundation/Value.h"

namespace zentavo::tools {

/// The paths of the members of a payload that neither the SDK's records nor the system have a place for, in the order
/// in which they stand; a hundred at most.
std::vector<std::string> unknownFields(const Map& aps);

} // namespace zentavo::tools
