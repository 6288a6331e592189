#include "zentavo/websocket/SecureRandom.h"

#include <openssl/rand.h>

#include "zentavo/foundation/Fault.h"

namespace zentavo::websocket {
namespace {

class OpenSslRandom final : public platform::Random {
public:
    void fill(std::span<std::uint8_t> bytes) override {
        if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) {
            fatalError("the system gives no random bytes");
        }
    }
};

} // namespace

std::shared_ptr<platform::Random> secureRandom() {
    // Never destroyed: the I/O thread may need it while the process exits.
    static const auto& random = *new std::shared_ptr<platform::Random>(std::make_shared<OpenSslRandom>());
    return random;
}

} // namespace zentavo::websocket
