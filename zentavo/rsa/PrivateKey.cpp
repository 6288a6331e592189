#include "zentavo/rsa/PrivateKey.h"

#include "zentavo/rsa/KeyStructure.h"
#include "zentavo/rsa/PEM.h"
#include "zentavo/rsa/Text.h"

namespace zentavo::rsa {
namespace {

/// The shortest block that holds a signature of the scheme: RFC 8017, sections 9.2 and 9.1.1.
std::size_t shortestBlock(Signature scheme) {
    switch (scheme) {
    case Signature::pkcs1SHA1:
        return 20 + 15 + 11;
    case Signature::pkcs1SHA256:
        return 32 + 19 + 11;
    case Signature::pkcs1SHA512:
        return 64 + 19 + 11;
    case Signature::pssSHA1:
        return 2 * 20 + 2;
    case Signature::pssSHA256:
        return 2 * 32 + 2;
    case Signature::pssSHA512:
        break;
    }
    return 2 * 64 + 2;
}

} // namespace

Result<PrivateKey> PrivateKey::fromPEM(std::string_view pem, const platform::KeyServices& services) {
    const auto block = PEM::read(pem);
    if (!block) {
        return block.error();
    }
    if (block->kind != PEM::Kind::privateKey) {
        return Error{"this is a public key where a private one belongs"};
    }
    return fromDER(block->der.span(), services);
}

Result<PrivateKey> PrivateKey::fromDER(std::span<const std::uint8_t> der, const platform::KeyServices& services) {
    const auto pkcs1 = privateKeyIn(der);
    if (!pkcs1) {
        return pkcs1.error();
    }
    auto key = services.privateKey(*pkcs1);
    if (!key) {
        return key.error();
    }
    return PrivateKey(std::move(*key));
}

Result<Bytes> PrivateKey::decrypt(std::span<const std::uint8_t> cipher, Encryption padding) const {
    if (cipher.size() != blockSize()) {
        return Error{"what this key decrypts is " + std::to_string(blockSize()) + " bytes long, not " +
                     std::to_string(cipher.size())};
    }
    return key().decrypt(cipher, padding);
}

Result<Bytes> PrivateKey::sign(std::span<const std::uint8_t> message, Signature scheme) const {
    if (blockSize() < shortestBlock(scheme)) {
        return Error{"a signature of this scheme takes a key of at least " + std::to_string(shortestBlock(scheme)) +
                     " bytes, not " + std::to_string(blockSize())};
    }
    return key().sign(message, scheme);
}

Result<std::string> PrivateKey::decryptText(std::string_view cipher, Encryption padding) const {
    const auto bytes = fromBase64(cipher);
    if (!bytes) {
        return bytes.error();
    }
    auto decrypted = decrypt(*bytes, padding);
    if (!decrypted) {
        return decrypted.error();
    }
    const SecureBytes plain(std::move(*decrypted));
    return std::string(plain.span().begin(), plain.span().end());
}

Result<std::string> PrivateKey::signText(std::string_view message, Signature scheme) const {
    const auto signature = sign(bytesOf(message), scheme);
    if (!signature) {
        return signature.error();
    }
    return base64::encode(*signature);
}

} // namespace zentavo::rsa
