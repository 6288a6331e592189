#pragma once

#include "zentavo/rsa/Key.h"

namespace zentavo::rsa {

/// An RSA public key.
class ZENTAVO_EXPORT PublicKey : public Key {
public:
    /// The first block of `pem` ("PUBLIC KEY" or "RSA PUBLIC KEY"), at most 64 KiB of text.
    static Result<PublicKey> fromPEM(std::string_view pem, const platform::KeyServices& services);
    /// A SubjectPublicKeyInfo or an RSAPublicKey; which of them, its bytes tell.
    static Result<PublicKey> fromDER(std::span<const std::uint8_t> der, const platform::KeyServices& services);

private:
    using Key::Key;
};

} // namespace zentavo::rsa
