#include "zentavo/rsa/SecureBytes.h"

namespace zentavo::rsa {

void wipe(std::span<std::uint8_t> bytes) noexcept {
    volatile std::uint8_t* at = bytes.data();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        at[i] = 0;
    }
}

SecureBytes::~SecureBytes() {
    bytes_.resize(bytes_.capacity()); // what was longer once is wiped to its end
    wipe(bytes_);
}

} // namespace zentavo::rsa
