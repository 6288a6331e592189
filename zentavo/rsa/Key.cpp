#include "zentavo/rsa/Key.h"

#include "zentavo/rsa/Text.h"

namespace zentavo::rsa {
namespace {

/// What the padding itself takes of a block: RFC 8017, sections 7.2.1 and 7.1.1.
std::size_t overhead(Encryption padding) {
    switch (padding) {
    case Encryption::pkcs1:
        return 11;
    case Encryption::oaepSHA1:
        return 2 * 20 + 2;
    case Encryption::oaepSHA256:
        break;
    }
    return 2 * 32 + 2;
}

} // namespace

std::size_t Key::longestPlain(Encryption padding) const noexcept {
    const std::size_t taken = overhead(padding);
    return blockSize() > taken ? blockSize() - taken : 0;
}

Result<Bytes> Key::encrypt(std::span<const std::uint8_t> plain, Encryption padding) const {
    const std::size_t limit = longestPlain(padding);
    if (plain.size() > limit) {
        return Error{"at most " + std::to_string(limit) + " bytes can be encrypted with this key and padding, not " +
                     std::to_string(plain.size())};
    }
    return key().encrypt(plain, padding);
}

Result<bool> Key::verify(std::span<const std::uint8_t> message, std::span<const std::uint8_t> signature,
                         Signature scheme) const {
    return key().verify(message, signature, scheme);
}

Result<std::string> Key::encryptText(std::string_view plain, Encryption padding) const {
    const auto cipher = encrypt(bytesOf(plain), padding);
    if (!cipher) {
        return cipher.error();
    }
    return base64::encode(*cipher);
}

Result<bool> Key::verifyText(std::string_view message, std::string_view signature, Signature scheme) const {
    const auto bytes = fromBase64(signature);
    if (!bytes) {
        return bytes.error();
    }
    return verify(bytesOf(message), *bytes, scheme);
}

} // namespace zentavo::rsa
