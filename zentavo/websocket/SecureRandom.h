#pragma once

#include <memory>

#include "zentavo/platform/Random.h"

namespace zentavo::websocket {

/// Chance for masks and keys, from OpenSSL's generator. The same object on every call.
std::shared_ptr<platform::Random> secureRandom();

} // namespace zentavo::websocket
