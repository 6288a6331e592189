#include "devserver/WebPushEncryption.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <span>

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/param_build.h>
#include <openssl/rand.h>

namespace zentavo::devserver::webpush {

namespace {

template <auto release>
struct Releaser {
    template <class T>
    void operator()(T* object) const noexcept {
        release(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Releaser<EVP_PKEY_free>>;
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, Releaser<EVP_PKEY_CTX_free>>;
using Number = std::unique_ptr<BIGNUM, Releaser<BN_clear_free>>;
using Builder = std::unique_ptr<OSSL_PARAM_BLD, Releaser<OSSL_PARAM_BLD_free>>;
using Parameters = std::unique_ptr<OSSL_PARAM, Releaser<OSSL_PARAM_free>>;
using Cipher = std::unique_ptr<EVP_CIPHER_CTX, Releaser<EVP_CIPHER_CTX_free>>;
using Digest = std::array<std::uint8_t, 32>;

constexpr const char* curve = "prime256v1";
constexpr std::size_t privateKeyBytes = 32;
constexpr std::size_t saltBytes = 16;
constexpr std::size_t tagBytes = 16;
constexpr std::uint32_t recordBytes = 4096;
constexpr std::uint8_t lastRecord = 2;

/// Null where the point is not on the curve. Without `privateKey`: a public key.
Key keyOf(const Bytes& publicKey, const Bytes* privateKey) {
    const Builder builder(OSSL_PARAM_BLD_new());
    const Number number(
        privateKey != nullptr ? BN_bin2bn(privateKey->data(), static_cast<int>(privateKey->size()), nullptr) : nullptr);
    OSSL_PARAM_BLD_push_utf8_string(builder.get(), OSSL_PKEY_PARAM_GROUP_NAME, curve, 0);
    OSSL_PARAM_BLD_push_octet_string(builder.get(), OSSL_PKEY_PARAM_PUB_KEY, publicKey.data(), publicKey.size());
    if (number) {
        OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_PRIV_KEY, number.get());
    }
    const Parameters parameters(OSSL_PARAM_BLD_to_param(builder.get()));
    const KeyContext context(EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr));
    EVP_PKEY* key = nullptr;
    if (parameters && EVP_PKEY_fromdata_init(context.get()) == 1) {
        EVP_PKEY_fromdata(context.get(), &key, privateKey != nullptr ? EVP_PKEY_KEYPAIR : EVP_PKEY_PUBLIC_KEY,
                          parameters.get());
    }
    return Key(key);
}

std::optional<Digest> agree(EVP_PKEY* own, EVP_PKEY* peer) {
    const KeyContext context(EVP_PKEY_CTX_new(own, nullptr));
    Digest secret{};
    std::size_t size = secret.size();
    const bool agreed = EVP_PKEY_derive_init(context.get()) == 1 &&
                        EVP_PKEY_derive_set_peer(context.get(), peer) == 1 &&
                        EVP_PKEY_derive(context.get(), secret.data(), &size) == 1 && size == secret.size();
    return agreed ? std::optional(secret) : std::nullopt;
}

Digest hmac(std::span<const std::uint8_t> key, std::span<const std::uint8_t> data) {
    Digest digest{};
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), data.data(), data.size(), digest.data(), nullptr);
    return digest;
}

/// HKDF (RFC 5869) for up to 32 bytes, which take one round of its second step.
Digest hkdf(std::span<const std::uint8_t> salt, std::span<const std::uint8_t> secret, std::string_view label,
            std::initializer_list<const Bytes*> context = {}) {
    Bytes info(label.begin(), label.end());
    info.push_back(0);
    for (const Bytes* part : context) {
        info.insert(info.end(), part->begin(), part->end());
    }
    info.push_back(1);
    return hmac(hmac(salt, secret), info);
}

/// `plain` encrypted, with the tag behind it; empty where the library refuses.
Bytes seal(const Bytes& plain, const Digest& key, const Digest& nonce) {
    const Cipher cipher(EVP_CIPHER_CTX_new());
    Bytes sealed(plain.size() + tagBytes);
    int size = 0;
    int rest = 0;
    const bool done =
        EVP_EncryptInit_ex(cipher.get(), EVP_aes_128_gcm(), nullptr, key.data(), nonce.data()) == 1 &&
        EVP_EncryptUpdate(cipher.get(), sealed.data(), &size, plain.data(), static_cast<int>(plain.size())) == 1 &&
        EVP_EncryptFinal_ex(cipher.get(), sealed.data() + size, &rest) == 1 &&
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_GET_TAG, tagBytes, sealed.data() + plain.size()) == 1;
    return done ? sealed : Bytes();
}

} // namespace

Result<Sender> Sender::random() {
    Sender sender{Bytes(privateKeyBytes), Bytes(publicKeyBytes), Bytes(saltBytes)};
    const Key key(EVP_EC_gen(curve));
    BIGNUM* number = nullptr;
    std::size_t size = 0;
    const bool made = key && EVP_PKEY_get_bn_param(key.get(), OSSL_PKEY_PARAM_PRIV_KEY, &number) == 1 &&
                      EVP_PKEY_get_octet_string_param(key.get(), OSSL_PKEY_PARAM_PUB_KEY, sender.publicKey.data(),
                                                      sender.publicKey.size(), &size) == 1 &&
                      RAND_bytes(sender.salt.data(), static_cast<int>(sender.salt.size())) == 1;
    const Number owner(number);
    if (!made || BN_bn2binpad(number, sender.privateKey.data(), static_cast<int>(privateKeyBytes)) < 0) {
        ERR_clear_error();
        return Error{"no key can be made to encrypt with"};
    }
    return sender;
}

Result<std::string> encrypt(std::string_view plain, const Receiver& receiver, const Sender& sender) {
    if (receiver.auth.size() != authBytes) {
        return Error{"the receiver's secret has " + std::to_string(receiver.auth.size()) + " bytes; expected 16"};
    }
    if (plain.size() > recordBytes - tagBytes - 1) {
        return Error{"the message does not fit into one record"};
    }
    const Key own = keyOf(sender.publicKey, &sender.privateKey);
    const Key peer = keyOf(receiver.publicKey, nullptr);
    const auto shared = own && peer ? agree(own.get(), peer.get()) : std::nullopt;
    if (!shared) {
        ERR_clear_error();
        return Error{peer ? std::string("the sender's key cannot be used")
                          : std::string("the receiver's key is no point of P-256")};
    }
    // First both ends' keys and the receiver's secret make one secret; with the salt that makes key and nonce.
    const Digest secret = hkdf(receiver.auth, *shared, "WebPush: info", {&receiver.publicKey, &sender.publicKey});
    const Digest key = hkdf(sender.salt, secret, "Content-Encoding: aes128gcm");
    const Digest nonce = hkdf(sender.salt, secret, "Content-Encoding: nonce");

    Bytes record(plain.begin(), plain.end());
    record.push_back(lastRecord);
    const Bytes sealed = seal(record, key, nonce);
    if (sealed.empty()) {
        ERR_clear_error();
        return Error{"the message cannot be encrypted"};
    }
    Bytes message = sender.salt;
    for (const int shift : {24, 16, 8, 0}) {
        message.push_back(static_cast<std::uint8_t>(recordBytes >> shift));
    }
    message.push_back(static_cast<std::uint8_t>(sender.publicKey.size()));
    message.insert(message.end(), sender.publicKey.begin(), sender.publicKey.end());
    message.insert(message.end(), sealed.begin(), sealed.end());
    return std::string(message.begin(), message.end());
}

} // namespace zentavo::devserver::webpush
