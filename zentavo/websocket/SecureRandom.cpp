#include "zentavo/websocket/SecureRandom.h"

#include <algorithm>

#include <sys/random.h>

#include "zentavo/foundation/Fault.h"

namespace zentavo::websocket {
namespace {

/// The system's own: a generator of a library's keeps state for each thread, which must be gone before the library is.
class SystemRandom final : public platform::Random {
public:
    void fill(std::span<std::uint8_t> bytes) override {
        constexpr std::size_t most = 256; // that the system gives at a time
        while (!bytes.empty()) {
            const auto part = bytes.first(std::min(bytes.size(), most));
            if (getentropy(part.data(), part.size()) != 0) {
                fatalError("the system gives no random bytes");
            }
            bytes = bytes.subspan(part.size());
        }
    }
};

} // namespace

std::shared_ptr<platform::Random> secureRandom() {
    // Never destroyed: the I/O thread may need it while the process exits.
    static const auto& random = *new std::shared_ptr<platform::Random>(std::make_shared<SystemRandom>());
    return random;
}

} // namespace zentavo::websocket
