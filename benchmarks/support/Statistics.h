#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace bench {

/// The value that a `share` (0 to 1) of `samples` does not exceed; 0 for none.
template <class T>
T percentile(std::vector<T> samples, double share) {
    if (samples.empty()) {
        return T();
    }
    const auto position = static_cast<std::size_t>(std::floor(share * static_cast<double>(samples.size() - 1)));
    const auto place = samples.begin() + static_cast<std::ptrdiff_t>(position);
    std::nth_element(samples.begin(), place, samples.end());
    return *place;
}

template <class T>
T median(std::vector<T> samples) {
    return percentile(std::move(samples), 0.5);
}

} // namespace bench
