#pragma once

#include <optional>

#include <jsc/jsc.h>

#include "zentavo/foundation/Value.h"

namespace zentavo::gtk {

/// What a page hands over, as a value of ours. None where JSON cannot say it, and where it is deeper or larger than
/// `WebView` allows: pages are hostile.
std::optional<Value> pageValue(JSCValue* value);

} // namespace zentavo::gtk
