#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::platform {

using Bytes = std::vector<std::uint8_t>;

/// RFC 8017, sections 7.2 and 7.1.
enum class RSAEncryption { pkcs1, oaepSHA1, oaepSHA256 };

/// RFC 8017, sections 8.2 and 8.1 (salt as long as the digest). The message is hashed by the key services.
enum class RSASignature { pkcs1SHA1, pkcs1SHA256, pkcs1SHA512, pssSHA1, pssSHA256, pssSHA512 };

/// An RSA key that the system keeps. Any thread. Key material is wiped when the key goes.
class ZENTAVO_EXPORT RSAKey {
public:
    virtual ~RSAKey() = default;

    /// Length of the modulus in bytes; what is encrypted or signed raw is limited by it.
    virtual std::size_t blockSize() const noexcept = 0;
    virtual bool isPrivate() const noexcept = 0;

    /// With a public key, or the public half of a private one. An input longer than the padding leaves room for is an
    /// error.
    virtual Result<Bytes> encrypt(std::span<const std::uint8_t> plain, RSAEncryption padding) const = 0;
    /// Private keys only. The error does not tell what was wrong with the padding; with `pkcs1`, a system may answer a
    /// wrong one with bytes that mean nothing instead, which is safer still.
    virtual Result<Bytes> decrypt(std::span<const std::uint8_t> cipher, RSAEncryption padding) const = 0;
    /// Private keys only.
    virtual Result<Bytes> sign(std::span<const std::uint8_t> message, RSASignature scheme) const = 0;
    /// False for a signature that is not this message's; an error where it could not be checked.
    virtual Result<bool> verify(std::span<const std::uint8_t> message, std::span<const std::uint8_t> signature,
                                RSASignature scheme) const = 0;
};

/// The system's cryptography. Any thread; the first call may load libraries and is best made off the host's threads.
class ZENTAVO_EXPORT KeyServices {
public:
    virtual ~KeyServices() = default;

    /// A key of the DER structure RSAPrivateKey (RFC 8017, A.1.2). Keys of fewer than 1024 or more than 16384 bits, and
    /// bytes that are no such structure, are errors; a system may take the same with its PKCS#8 or X.509 header too.
    virtual Result<std::shared_ptr<const RSAKey>> privateKey(std::span<const std::uint8_t> pkcs1) const = 0;
    /// A key of the DER structure RSAPublicKey (RFC 8017, A.1.1), with the same bounds.
    virtual Result<std::shared_ptr<const RSAKey>> publicKey(std::span<const std::uint8_t> pkcs1) const = 0;
};

} // namespace zentavo::platform
