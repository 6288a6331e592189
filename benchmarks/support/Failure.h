#pragma once

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>

namespace bench {

/// A benchmark that cannot do its work ends: half a measurement is worse than none. Caught in `main`, so that collectors
/// and folders go first.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

inline void check(bool condition, const std::string& what) {
    if (!condition) {
        throw Failure(what);
    }
}

/// As `check`, for calls to the system: says what `errno` says.
inline void checkSystem(bool condition, const std::string& what) {
    if (!condition) {
        throw Failure(what + ": " + std::generic_category().message(errno));
    }
}

} // namespace bench
