#include "tests/devserver/PushReceiver.h"

#include <array>

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/kdf.h>

#include "zentavo/foundation/Base64.h"

namespace zentavo::devserver {

namespace {

std::string derive(const std::string& salt, const std::string& secret, const std::string& info, std::size_t size) {
    const std::unique_ptr<EVP_KDF, void (*)(EVP_KDF*)> kdf(EVP_KDF_fetch(nullptr, "HKDF", nullptr), EVP_KDF_free);
    const std::unique_ptr<EVP_KDF_CTX, void (*)(EVP_KDF_CTX*)> context(EVP_KDF_CTX_new(kdf.get()), EVP_KDF_CTX_free);
    const auto octets = [](const char* name, const std::string& bytes) {
        return OSSL_PARAM_construct_octet_string(name, const_cast<char*>(bytes.data()), bytes.size());
    };
    std::string digest = "SHA256";
    const std::array<OSSL_PARAM, 5> parameters{
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest.data(), 0), octets(OSSL_KDF_PARAM_SALT, salt),
        octets(OSSL_KDF_PARAM_KEY, secret), octets(OSSL_KDF_PARAM_INFO, info), OSSL_PARAM_construct_end()};
    std::string out(size, '\0');
    const int done =
        EVP_KDF_derive(context.get(), reinterpret_cast<unsigned char*>(out.data()), size, parameters.data());
    return done == 1 ? out : std::string();
}

const unsigned char* bytesOf(std::string_view text) { return reinterpret_cast<const unsigned char*>(text.data()); }
std::string textOf(const webpush::Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

} // namespace

PushReceiver::PushReceiver()
    : key_(EVP_EC_gen("P-256"), EVP_PKEY_free), keys_{webpush::Bytes(65), webpush::Bytes(16, 7)} {
    std::size_t size = 0;
    EVP_PKEY_get_octet_string_param(key_.get(), OSSL_PKEY_PARAM_PUB_KEY, keys_.publicKey.data(), 65, &size);
}

std::string PushReceiver::fragment() const {
    return "#p256dh=" + base64::encodeURL(keys_.publicKey) + "&auth=" + base64::encodeURL(keys_.auth);
}

std::optional<std::string> PushReceiver::open(std::string_view message) const {
    constexpr std::size_t head = 86;
    constexpr std::size_t tag = 16;
    if (message.size() < head + tag + 1 || message.substr(16, 5) != std::string_view("\0\0\x10\0\x41", 5)) {
        return std::nullopt;
    }
    const std::string salt(message.substr(0, 16));
    const std::string senderKey(message.substr(21, 65));

    const std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY*)> peer(EVP_PKEY_new(), EVP_PKEY_free);
    EVP_PKEY_copy_parameters(peer.get(), key_.get());
    EVP_PKEY_set1_encoded_public_key(peer.get(), bytesOf(senderKey), senderKey.size());
    const std::unique_ptr<EVP_PKEY_CTX, void (*)(EVP_PKEY_CTX*)> agreement(EVP_PKEY_CTX_new(key_.get(), nullptr),
                                                                           EVP_PKEY_CTX_free);
    std::string shared(32, '\0');
    std::size_t size = shared.size();
    if (EVP_PKEY_derive_init(agreement.get()) != 1 || EVP_PKEY_derive_set_peer(agreement.get(), peer.get()) != 1 ||
        EVP_PKEY_derive(agreement.get(), reinterpret_cast<unsigned char*>(shared.data()), &size) != 1) {
        return std::nullopt;
    }
    const std::string secret = derive(textOf(keys_.auth), shared,
                                      std::string("WebPush: info") + '\0' + textOf(keys_.publicKey) + senderKey, 32);
    const std::string key = derive(salt, secret, std::string("Content-Encoding: aes128gcm") + '\0', 16);
    const std::string nonce = derive(salt, secret, std::string("Content-Encoding: nonce") + '\0', 12);

    const std::string_view sealed = message.substr(head, message.size() - head - tag);
    std::string mark(message.substr(message.size() - tag));
    std::string plain(sealed.size(), '\0');
    int length = 0;
    int rest = 0;
    const std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> cipher(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    auto* const out = reinterpret_cast<unsigned char*>(plain.data());
    const bool opened =
        EVP_DecryptInit_ex(cipher.get(), EVP_aes_128_gcm(), nullptr, bytesOf(key), bytesOf(nonce)) == 1 &&
        EVP_DecryptUpdate(cipher.get(), out, &length, bytesOf(sealed), static_cast<int>(sealed.size())) == 1 &&
        EVP_CIPHER_CTX_ctrl(cipher.get(), EVP_CTRL_GCM_SET_TAG, static_cast<int>(tag), mark.data()) == 1 &&
        EVP_DecryptFinal_ex(cipher.get(), out + length, &rest) == 1;
    if (!opened || plain.back() != 2) {
        return std::nullopt;
    }
    plain.pop_back();
    return plain;
}

} // namespace zentavo::devserver
