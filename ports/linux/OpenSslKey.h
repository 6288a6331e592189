#pragma once

#include <memory>

#include "ports/linux/OpenSslLibrary.h"
#include "zentavo/platform/KeyServices.h"

namespace zentavo::linux_port {

/// A key in OpenSSL's hands, which wipes its private numbers when it goes. Each operation has a context of its own, so
/// threads do not meet.
class OpenSslKey final : public platform::RSAKey {
public:
    using Bytes = platform::Bytes;
    using Slice = std::span<const std::uint8_t>;

    /// The PKCS#1 structure in `der`, and nothing behind it.
    static Result<std::shared_ptr<const platform::RSAKey>> make(const OpenSslLibrary& library, Slice der,
                                                                bool isPrivate);
    /// Takes `key` over.
    OpenSslKey(const OpenSslLibrary& library, EVP_PKEY* key, bool isPrivate)
        : library_(library), key_(key), isPrivate_(isPrivate) {}
    ~OpenSslKey() override { library_.EVP_PKEY_free(key_); }
    OpenSslKey(const OpenSslKey&) = delete;
    OpenSslKey& operator=(const OpenSslKey&) = delete;

    std::size_t blockSize() const noexcept override;
    bool isPrivate() const noexcept override { return isPrivate_; }
    Result<Bytes> encrypt(Slice plain, platform::RSAEncryption padding) const override;
    Result<Bytes> decrypt(Slice cipher, platform::RSAEncryption padding) const override;
    Result<Bytes> sign(Slice message, platform::RSASignature scheme) const override;
    Result<bool> verify(Slice message, Slice signature, platform::RSASignature scheme) const override;

private:
    const OpenSslLibrary& library_;
    EVP_PKEY* const key_;
    const bool isPrivate_;
};

} // namespace zentavo::linux_port
