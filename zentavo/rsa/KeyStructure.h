#pragma once

#include <cstdint>
#include <span>

#include "zentavo/foundation/Result.h"

namespace zentavo::rsa {

/// The RSAPrivateKey (RFC 8017, A.1.2) in `der`, which is one, or a PrivateKeyInfo (RFC 5208; version 2 of RFC 5958)
/// around one. A part of `der`, without a copy. Numbers are checked as far as looking at them goes: that they belong
/// together is for the key services to find out. Keys of more than two primes are refused.
Result<std::span<const std::uint8_t>> privateKeyIn(std::span<const std::uint8_t> der);

/// The same for the RSAPublicKey (RFC 8017, A.1.1) in `der`, which is one, or a SubjectPublicKeyInfo (RFC 5280) around
/// one.
Result<std::span<const std::uint8_t>> publicKeyIn(std::span<const std::uint8_t> der);

} // namespace zentavo::rsa
