#pragma once

#include "zentavo/platform/KeyServices.h"

namespace zentavo::linux_port {

/// The cryptography of OpenSSL 3, which is opened when the first key is made; without it, making keys is an error. What
/// the system's configuration of OpenSSL forbids (SHA-1 signatures, short keys) fails with its reason.
class ZENTAVO_EXPORT OpenSslKeyServices final : public platform::KeyServices {
public:
    Result<std::shared_ptr<const platform::RSAKey>> privateKey(std::span<const std::uint8_t> pkcs1) const override;
    Result<std::shared_ptr<const platform::RSAKey>> publicKey(std::span<const std::uint8_t> pkcs1) const override;
};

} // namespace zentavo::linux_port
