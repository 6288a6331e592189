#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/KeyServices.h"

namespace zentavo::rsa {

using Bytes = platform::Bytes;
using Encryption = platform::RSAEncryption;
using Signature = platform::RSASignature;

/// What public and private keys have in common: whoever has the private key has the public one too. Copies share one key
/// of the system's, which is wiped when the last of them goes. Any thread.
class ZENTAVO_EXPORT Key {
public:
    /// Length of the modulus in bytes, which is that of every ciphertext and signature.
    std::size_t blockSize() const noexcept { return key_->blockSize(); }
    /// How many bytes can be encrypted at once; 0 where the key is too short for the padding.
    std::size_t longestPlain(Encryption padding) const noexcept;

    Result<Bytes> encrypt(std::span<const std::uint8_t> plain, Encryption padding) const;
    /// False for a signature that is not this message's; an error where it could not be checked.
    Result<bool> verify(std::span<const std::uint8_t> message, std::span<const std::uint8_t> signature,
                        Signature scheme) const;

    /// The same for text, with base64 text for what is encrypted or signed.
    Result<std::string> encryptText(std::string_view plain, Encryption padding) const;
    Result<bool> verifyText(std::string_view message, std::string_view signature, Signature scheme) const;

protected:
    explicit Key(std::shared_ptr<const platform::RSAKey> key) noexcept : key_(std::move(key)) {}
    const platform::RSAKey& key() const noexcept { return *key_; }

private:
    std::shared_ptr<const platform::RSAKey> key_;
};

} // namespace zentavo::rsa
