#pragma once

#include <optional>
#include <string_view>

#include "zentavo/foundation/Value.h"

namespace zentavo::linux_port {

/// A property list, XML or binary, as a value; none when it is neither or is built to hurt: nested deeper than 64, or
/// grown by shared references beyond 20 000 nodes. Whoever calls bounds the text's length.
std::optional<Value> readPropertyList(std::string_view text);

} // namespace zentavo::linux_port
