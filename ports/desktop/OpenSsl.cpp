#include "ports/desktop/OpenSsl.h"

#include <openssl/crypto.h>

namespace zentavo::desktop {

void prepareOpenSsl() { [[maybe_unused]] static const int once = OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr); }

} // namespace zentavo::desktop
