#include "zentavo/foundation/Atomic.h"

#include <atomic>
#include <cstdint>

namespace zentavo {

std::string nextAtomicLabel() {
    static std::atomic<std::uint64_t> last{0};
    return "com.zentavo.atomic." + std::to_string(last.fetch_add(1, std::memory_order_relaxed) + 1);
}

} // namespace zentavo
