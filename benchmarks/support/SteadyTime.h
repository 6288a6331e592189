#pragma once

#include <chrono>
#include <cstdint>
#include <thread>

namespace bench {

/// Nanoseconds of the system's monotonic clock. All processes of one machine read the same clock, so moments taken in
/// different processes may be subtracted.
inline std::int64_t steadyNanoseconds() noexcept {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

inline void sleepFor(std::chrono::nanoseconds time) { std::this_thread::sleep_for(time); }

} // namespace bench
