#pragma once

#include "zentavo/rsa/Key.h"

namespace zentavo::rsa {

/// An RSA private key, with its public half. What was decoded on the way to it is wiped before `fromPEM` returns; the
/// text or bytes that a caller brings are the caller's to wipe.
class ZENTAVO_EXPORT PrivateKey : public Key {
public:
    /// The first block of `pem` ("PRIVATE KEY" or "RSA PRIVATE KEY"), at most 64 KiB of text, not encrypted.
    static Result<PrivateKey> fromPEM(std::string_view pem, const platform::KeyServices& services);
    /// A PrivateKeyInfo (PKCS#8) or an RSAPrivateKey (PKCS#1); which of them, its bytes tell.
    static Result<PrivateKey> fromDER(std::span<const std::uint8_t> der, const platform::KeyServices& services);

    /// `cipher` is one block. The error never tells what was wrong inside it.
    Result<Bytes> decrypt(std::span<const std::uint8_t> cipher, Encryption padding) const;
    /// Hashes and signs a message of any length.
    Result<Bytes> sign(std::span<const std::uint8_t> message, Signature scheme) const;

    /// The same for text, with base64 text for what is encrypted or signed.
    Result<std::string> decryptText(std::string_view cipher, Encryption padding) const;
    Result<std::string> signText(std::string_view message, Signature scheme) const;

private:
    using Key::Key;
};

} // namespace zentavo::rsa
