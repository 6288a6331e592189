#pragma once

#include <atomic>

#include "zentavo/platform/Random.h"

namespace zentavo::testing {

/// Chance that repeats itself: one seed gives one sequence, on every system. Not fit for secrets.
class ZENTAVO_EXPORT SeededRandom final : public platform::Random {
public:
    explicit SeededRandom(std::uint64_t seed) : state_(seed) {}

    void fill(std::span<std::uint8_t> bytes) override;

private:
    std::atomic<std::uint64_t> state_;
};

} // namespace zentavo::testing
