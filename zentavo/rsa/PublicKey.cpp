#include "zentavo/rsa/PublicKey.h"

#include "zentavo/rsa/KeyStructure.h"
#include "zentavo/rsa/PEM.h"

namespace zentavo::rsa {

Result<PublicKey> PublicKey::fromPEM(std::string_view pem, const platform::KeyServices& services) {
    const auto block = PEM::read(pem);
    if (!block) {
        return block.error();
    }
    if (block->kind != PEM::Kind::publicKey) {
        return Error{"this is a private key where a public one belongs"};
    }
    return fromDER(block->der.span(), services);
}

Result<PublicKey> PublicKey::fromDER(std::span<const std::uint8_t> der, const platform::KeyServices& services) {
    const auto pkcs1 = publicKeyIn(der);
    if (!pkcs1) {
        return pkcs1.error();
    }
    auto key = services.publicKey(*pkcs1);
    if (!key) {
        return key.error();
    }
    return PublicKey(std::move(*key));
}

} // namespace zentavo::rsa
