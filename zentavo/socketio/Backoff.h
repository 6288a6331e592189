#pragma once

#include <chrono>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Random.h"

namespace zentavo::socketio {

/// How long to wait before connecting again.
struct Backoff {
    std::chrono::milliseconds wait{10'000};
    /// A year counts as the longest.
    std::chrono::milliseconds maximumWait{30'000};
    /// From 0 to 1: how far chance moves a wait, as a part of it.
    double randomizationFactor = 0.5;
};

/// The wait before attempt `attempt`, counted from 0: it doubles each time, is moved up or down by chance, and then cut
/// at the maximum, however many attempts there were. Asks `random` twice.
ZENTAVO_EXPORT std::chrono::milliseconds backoffDelay(const Backoff& backoff, unsigned attempt,
                                                      platform::Random& random);

} // namespace zentavo::socketio
