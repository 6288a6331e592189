#include "ports/linux/OpenSslKeyServices.h"

#include "ports/linux/OpenSslKey.h"

namespace zentavo::linux_port {
namespace {

Result<std::shared_ptr<const platform::RSAKey>> makeKey(std::span<const std::uint8_t> pkcs1, bool isPrivate) {
    const OpenSslLibrary* library = OpenSslLibrary::shared();
    if (library == nullptr) {
        return Error{"there is no OpenSSL 3 (libcrypto.so.3) on this system"};
    }
    return OpenSslKey::make(*library, pkcs1, isPrivate);
}

} // namespace

Result<std::shared_ptr<const platform::RSAKey>>
OpenSslKeyServices::privateKey(std::span<const std::uint8_t> pkcs1) const {
    return makeKey(pkcs1, true);
}

Result<std::shared_ptr<const platform::RSAKey>>
OpenSslKeyServices::publicKey(std::span<const std::uint8_t> pkcs1) const {
    return makeKey(pkcs1, false);
}

} // namespace zentavo::linux_port
