#include "tests/desktop/WebPushSender.h"

#include <array>
#include <stdexcept>

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/param_build.h>

#include "zentavo/foundation/Base64.h"

namespace zentavo::tests {

namespace {

// Those of the RFC's own example.
constexpr std::string_view senderPrivate = "yfWPiYE-n46HLnH0KqZOF1fJJU3MYrct3AELtAQ-oRw";
constexpr std::string_view senderPublic =
    "BP4z9KsN6nGRTbVYI_c7VJSPQTBtkgcy27mlmlMoZIIgDll6e3vCYLocInmYWAmS6TlzAC8wEqKK6PBru3jl7A8";
constexpr std::string_view salt = "DGv6ra1nlYgDCS1FRnbzlw";

void must(bool done) {
    if (!done) {
        throw std::runtime_error("OpenSSL refuses");
    }
}

const unsigned char* octets(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }

EVP_PKEY* key(std::string publicKey, const std::string& privateKey) {
    OSSL_PARAM_BLD* builder = OSSL_PARAM_BLD_new();
    BIGNUM* number = BN_bin2bn(octets(privateKey), static_cast<int>(privateKey.size()), nullptr);
    OSSL_PARAM_BLD_push_utf8_string(builder, OSSL_PKEY_PARAM_GROUP_NAME, "prime256v1", 0);
    OSSL_PARAM_BLD_push_octet_string(builder, OSSL_PKEY_PARAM_PUB_KEY, publicKey.data(), publicKey.size());
    if (!privateKey.empty()) {
        OSSL_PARAM_BLD_push_BN(builder, OSSL_PKEY_PARAM_PRIV_KEY, number);
    }
    OSSL_PARAM* parameters = OSSL_PARAM_BLD_to_param(builder);
    EVP_PKEY_CTX* context = EVP_PKEY_CTX_new_from_name(nullptr, "EC", nullptr);
    EVP_PKEY* made = nullptr;
    must(EVP_PKEY_fromdata_init(context) == 1 && EVP_PKEY_fromdata(context, &made, EVP_PKEY_KEYPAIR, parameters) == 1);
    EVP_PKEY_CTX_free(context);
    OSSL_PARAM_free(parameters);
    OSSL_PARAM_BLD_free(builder);
    BN_free(number);
    return made;
}

std::string agree(const std::string& receiver) {
    EVP_PKEY* mine = key(WebPushSender::bytes(senderPublic), WebPushSender::bytes(senderPrivate));
    EVP_PKEY* theirs = key(receiver, "");
    EVP_PKEY_CTX* context = EVP_PKEY_CTX_new(mine, nullptr);
    std::string shared(32, '\0');
    std::size_t size = shared.size();
    must(EVP_PKEY_derive_init(context) == 1 && EVP_PKEY_derive_set_peer(context, theirs) == 1 &&
         EVP_PKEY_derive(context, reinterpret_cast<unsigned char*>(shared.data()), &size) == 1);
    EVP_PKEY_CTX_free(context);
    EVP_PKEY_free(theirs);
    EVP_PKEY_free(mine);
    return shared;
}

std::string derive(std::string saltBytes, std::string secret, std::string info, std::size_t size) {
    EVP_KDF* kdf = EVP_KDF_fetch(nullptr, "HKDF", nullptr);
    EVP_KDF_CTX* context = EVP_KDF_CTX_new(kdf);
    std::string digest = "SHA256";
    const std::array<OSSL_PARAM, 5> parameters{
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest.data(), 0),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SALT, saltBytes.data(), saltBytes.size()),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, secret.data(), secret.size()),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_INFO, info.data(), info.size()), OSSL_PARAM_construct_end()};
    std::string result(size, '\0');
    must(EVP_KDF_derive(context, reinterpret_cast<unsigned char*>(result.data()), size, parameters.data()) == 1);
    EVP_KDF_CTX_free(context);
    EVP_KDF_free(kdf);
    return result;
}

std::string seal(const std::string& contentKey, const std::string& nonce, const std::string& text) {
    EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
    std::string sealed(text.size() + 16, '\0');
    auto* out = reinterpret_cast<unsigned char*>(sealed.data());
    int written = 0;
    must(EVP_EncryptInit_ex(context, EVP_aes_128_gcm(), nullptr, octets(contentKey), octets(nonce)) == 1 &&
         EVP_EncryptUpdate(context, out, &written, octets(text), static_cast<int>(text.size())) == 1 &&
         EVP_EncryptFinal_ex(context, out + written, &written) == 1 &&
         EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_GET_TAG, 16, out + text.size()) == 1);
    EVP_CIPHER_CTX_free(context);
    return sealed;
}

} // namespace

std::string WebPushSender::encrypt(const desktop::WebPushKeys& receiver, std::string_view text) const {
    using namespace std::string_literals;
    const std::string theirs = publicKey.empty() ? bytes(receiver.publicKeyText()) : publicKey;
    const std::string secret = auth.empty() ? bytes(receiver.authText()) : auth;
    const std::string mine = bytes(senderPublic);
    const std::string input = derive(secret, agree(theirs), "WebPush: info\0"s + theirs + mine, 32);
    const std::string contentKey = derive(bytes(salt), input, "Content-Encoding: aes128gcm\0"s, 16);
    const std::string nonce = derive(bytes(salt), input, "Content-Encoding: nonce\0"s, 12);
    std::string head = bytes(salt);
    for (int shift = 24; shift >= 0; shift -= 8) {
        head += static_cast<char>(recordSize >> static_cast<unsigned>(shift));
    }
    head += static_cast<char>(mine.size());
    return head + mine + seal(contentKey, nonce, std::string(text) + ending);
}

std::string WebPushSender::bytes(std::string_view base64url) {
    const auto decoded = base64::decodeURL(base64url);
    must(decoded.has_value());
    return {decoded->begin(), decoded->end()};
}

} // namespace zentavo::tests
