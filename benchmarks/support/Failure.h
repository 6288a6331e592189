#pragma once

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

/// A benchmark that cannot do its work says so and ends: a half measurement is worse than none.
inline void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "zentavo-bench: %s: %s\n", what, std::strerror(errno));
        std::_Exit(2);
    }
}

} // namespace bench
