#include "zentavo/socketio/Backoff.h"

#include <algorithm>
#include <cmath>

namespace zentavo::socketio {

namespace {
/// Beyond it a wait is as good as none at all, and its nanoseconds would overflow.
constexpr std::chrono::milliseconds longest = std::chrono::hours(24 * 365);
} // namespace

std::chrono::milliseconds backoffDelay(const Backoff& backoff, unsigned attempt, platform::Random& random) {
    // In doubles, which after thousands of doublings are infinite and not negative.
    const auto wait = static_cast<double>(std::max<std::int64_t>(backoff.wait.count(), 0));
    const auto maximum = static_cast<double>(std::clamp<std::int64_t>(backoff.maximumWait.count(), 0, longest.count()));
    const double factor = backoff.randomizationFactor > 0 ? std::min(backoff.randomizationFactor, 1.0) : 0.0;
    constexpr std::uint64_t steps = std::uint64_t{1} << 53U;
    const double chance = static_cast<double>(random.below(steps)) / static_cast<double>(steps);
    const bool longer = random.below(2) == 1;
    const double base = std::ldexp(wait, static_cast<int>(std::min(attempt, 60U)));
    const double deviation = std::floor(chance * factor * base);
    const double moved = longer ? base + deviation : base - deviation;
    return std::chrono::milliseconds(static_cast<std::int64_t>(std::min(moved, maximum)));
}

} // namespace zentavo::socketio
