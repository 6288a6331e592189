#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"

namespace zentavo::desktop {

/// Longer URLs are refused: they travel in requests of the SDK.
inline constexpr std::size_t maximumEndpointBytes = 2048;
/// More than the keys take.
inline constexpr std::size_t maximumKeyBytes = 256;

/// The URL that a distributor says pushes are to be sent to: http or https, with a host, and without a fragment, whose
/// place the keys take.
Result<std::string> readPushEndpoint(std::string_view text);
/// Whether senders can use it: such an endpoint, perhaps with keys in its fragment.
bool isPushToken(std::string_view text);

} // namespace zentavo::desktop
