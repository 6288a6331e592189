#pragma once

#include <string_view>

#include "zentavo/foundation/Result.h"
#include "zentavo/inapp/CDPDeliveryOperation.h"
#include "zentavo/platform/Platform.h"

namespace zentavo {

/// The private key that the build carries, PEM; empty text where it was built without one. Never logged.
std::string_view signingKeyPEM() noexcept;

/// What proves to the service that the request with this body comes from this SDK: a signature over the body's text, the
/// time in milliseconds and a new UUID, with nothing in between. Takes milliseconds of work, and may load libraries: not
/// for a host's thread. The error never holds any of the key. A fault where the clock has no time to tell.
Result<CDPDeliveryOperation::Proof> proveViewInfo(std::string_view body, std::string_view keyPEM,
                                                  const platform::Platform& platform);

} // namespace zentavo
