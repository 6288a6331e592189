#pragma once

#include <chrono>
#include <optional>

#include "zentavo/platform/Clock.h"

namespace zentavo {

/// When a failed request is tried again. Deliberately slow, and over after a day: a pure function of its arguments.
class RetryRule {
public:
    static constexpr std::chrono::seconds earlyDelay{60};
    static constexpr std::chrono::seconds lateDelay{3600};
    /// How long after the first failure retries may still start.
    static constexpr std::chrono::hours period{24};
    static constexpr int earlyAttempts = 3;

    /// The pause before the next try after the `attempt`-th failure (counted from 1) at `now`; none when that try would
    /// start at `stop` or later, which ends the period.
    static std::optional<std::chrono::seconds> next(int attempt, platform::TimePoint now, platform::TimePoint stop) {
        const std::chrono::seconds delay = attempt <= earlyAttempts ? earlyDelay : lateDelay;
        if (now + delay < stop) {
            return delay;
        }
        return std::nullopt;
    }
};

} // namespace zentavo
