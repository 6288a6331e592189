#pragma once

#include <chrono>

namespace bench {

using Moment = std::chrono::steady_clock::time_point;

inline Moment now() { return std::chrono::steady_clock::now(); }
inline double milliseconds(Moment from, Moment to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

} // namespace bench
