#include "ports/memory/SeededRandom.h"

namespace zentavo::testing {

void SeededRandom::fill(std::span<std::uint8_t> bytes) {
    // A counter stepped by an odd constant and scrambled (the splitmix64 generator), so threads need no lock.
    constexpr std::uint64_t step = 0x9E3779B97F4A7C15U;
    std::uint64_t word = 0;
    unsigned left = 0;
    for (std::uint8_t& byte : bytes) {
        if (left == 0) {
            word = state_.fetch_add(step) + step;
            word = (word ^ (word >> 30U)) * 0xBF58476D1CE4E5B9U;
            word = (word ^ (word >> 27U)) * 0x94D049BB133111EBU;
            word ^= word >> 31U;
            left = sizeof(word);
        }
        byte = static_cast<std::uint8_t>(word);
        word >>= 8U;
        --left;
    }
}

} // namespace zentavo::testing
