#pragma once

#include <cstdint>

namespace bench {

/// What the system says about this process.
struct ProcessStatus {
    std::int64_t residentKilobytes = 0;
    std::int64_t privateKilobytes = 0; ///< the resident part that no file stands behind
    std::int64_t threads = 0;

    static ProcessStatus now();
};

/// Processor time of all threads of this process so far, user and system.
std::int64_t processorNanoseconds();

} // namespace bench
