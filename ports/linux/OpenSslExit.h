#pragma once

namespace zentavo::linux_port {

/// Keeps OpenSSL from tidying up when the process exits, for what its threads may still be using then. `library` is an
/// open one that is libcrypto or brings it along; one that does not is left alone.
///
/// Must be OpenSSL's first call; where the host has called it before, the host's own handler stands and this changes
/// nothing.
void keepOpenSslUntilTheEnd(void* library);

} // namespace zentavo::linux_port
