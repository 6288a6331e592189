#include "zentavo/platform/Random.h"

#include <array>
#include <cstring>
#include <limits>

#include "zentavo/foundation/UUID.h"

namespace zentavo::platform {

std::uint64_t Random::below(std::uint64_t bound) {
    if (bound == 0) {
        return 0;
    }
    // 2^64 is no multiple of most bounds: draws above the largest multiple would favour small results.
    const std::uint64_t surplus = (std::numeric_limits<std::uint64_t>::max() % bound + 1) % bound;
    for (;;) {
        std::array<std::uint8_t, sizeof(std::uint64_t)> bytes{};
        fill(bytes);
        std::uint64_t drawn = 0;
        std::memcpy(&drawn, bytes.data(), bytes.size());
        if (drawn <= std::numeric_limits<std::uint64_t>::max() - surplus) {
            return drawn % bound;
        }
    }
}

std::string Random::uuidText() {
    std::array<std::uint8_t, 16> bytes{};
    fill(bytes);
    return uuid::text(uuid::version4(bytes));
}

} // namespace zentavo::platform
