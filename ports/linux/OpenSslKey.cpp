#include "ports/linux/OpenSslKey.h"

#include <array>
#include <string>
#include <string_view>

#include <openssl/core_names.h>
#include <openssl/params.h>

#include "ports/linux/OpenSslErrors.h"
#include "ports/linux/OpenSslKeyNumbers.h"

namespace zentavo::linux_port {
namespace {

using platform::RSAEncryption;
using platform::RSASignature;

template <class Object>
using Owner = std::unique_ptr<Object, void (*)(Object*)>;

constexpr int fewestBits = 1024;
constexpr int mostBits = 16384;

struct SchemeParts {
    const char* digest;
    const char* padding;
};

SchemeParts partsOf(RSASignature scheme) {
    switch (scheme) {
    case RSASignature::pkcs1SHA1:
        return {"SHA1", OSSL_PKEY_RSA_PAD_MODE_PKCSV15};
    case RSASignature::pkcs1SHA256:
        return {"SHA256", OSSL_PKEY_RSA_PAD_MODE_PKCSV15};
    case RSASignature::pkcs1SHA512:
        return {"SHA512", OSSL_PKEY_RSA_PAD_MODE_PKCSV15};
    case RSASignature::pssSHA1:
        return {"SHA1", OSSL_PKEY_RSA_PAD_MODE_PSS};
    case RSASignature::pssSHA256:
        return {"SHA256", OSSL_PKEY_RSA_PAD_MODE_PSS};
    case RSASignature::pssSHA512:
        break;
    }
    return {"SHA512", OSSL_PKEY_RSA_PAD_MODE_PSS};
}

/// What OpenSSL is told about one operation.
class Parameters {
public:
    Parameters(const OpenSslLibrary& library, RSAEncryption padding) : library_(library) {
        if (padding == RSAEncryption::pkcs1) {
            add(OSSL_ASYM_CIPHER_PARAM_PAD_MODE, OSSL_PKEY_RSA_PAD_MODE_PKCSV15);
            // From 3.2 on, and passed over before: wrong padding decrypts to bytes that depend on key and ciphertext
            // only, so that nobody learns from the outcome which padding was right.
            entries_[count_++] = library_.OSSL_PARAM_construct_uint("implicit-rejection", &yes_);
        } else {
            const char* digest = padding == RSAEncryption::oaepSHA1 ? "SHA1" : "SHA256";
            add(OSSL_ASYM_CIPHER_PARAM_PAD_MODE, OSSL_PKEY_RSA_PAD_MODE_OAEP);
            add(OSSL_ASYM_CIPHER_PARAM_OAEP_DIGEST, digest);
            add(OSSL_ASYM_CIPHER_PARAM_MGF1_DIGEST, digest);
        }
        entries_[count_] = library_.OSSL_PARAM_construct_end();
    }
    Parameters(const OpenSslLibrary& library, SchemeParts scheme) : library_(library) {
        add(OSSL_SIGNATURE_PARAM_PAD_MODE, scheme.padding);
        if (std::string_view(scheme.padding) == OSSL_PKEY_RSA_PAD_MODE_PSS) {
            add(OSSL_SIGNATURE_PARAM_MGF1_DIGEST, scheme.digest);
            add(OSSL_SIGNATURE_PARAM_PSS_SALTLEN, OSSL_PKEY_RSA_PSS_SALT_LEN_DIGEST);
        }
        entries_[count_] = library_.OSSL_PARAM_construct_end();
    }
    Parameters(const Parameters&) = delete;
    Parameters& operator=(const Parameters&) = delete;

    const OSSL_PARAM* list() const { return entries_.data(); }

private:
    void add(const char* name, const char* value) { // which OpenSSL only reads
        entries_[count_++] = library_.OSSL_PARAM_construct_utf8_string(name, const_cast<char*>(value), 0);
    }

    const OpenSslLibrary& library_;
    unsigned yes_ = 1;
    std::array<OSSL_PARAM, 4> entries_{};
    std::size_t count_ = 0;
};

Owner<EVP_PKEY_CTX> contextOf(const OpenSslLibrary& library, EVP_PKEY* key) {
    return {library.EVP_PKEY_CTX_new_from_pkey(nullptr, key, nullptr), library.EVP_PKEY_CTX_free};
}

} // namespace

Result<std::shared_ptr<const platform::RSAKey>> OpenSslKey::make(const OpenSslLibrary& library, Slice der,
                                                                 bool isPrivate) {
    OpenSslKeyNumbers numbers(library, der, isPrivate);
    if (!numbers.read()) {
        return Error{"the RSA key cannot be read: " + numbers.read().error().message};
    }
    const OpenSslErrors errors(library);
    const Owner<EVP_PKEY_CTX> context(library.EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr),
                                      library.EVP_PKEY_CTX_free);
    EVP_PKEY* key = nullptr;
    if (context == nullptr || library.EVP_PKEY_fromdata_init(context.get()) != 1 ||
        library.EVP_PKEY_fromdata(context.get(), &key, isPrivate ? EVP_PKEY_KEYPAIR : EVP_PKEY_PUBLIC_KEY,
                                  numbers.list()) != 1) {
        return errors.error("the RSA key cannot be read");
    }
    auto result = std::make_shared<OpenSslKey>(library, key, isPrivate);
    const int bits = library.EVP_PKEY_get_bits(key);
    if (bits < fewestBits || bits > mostBits) {
        return Error{"an RSA key of " + std::to_string(bits) + " bits is refused: 1024 to 16384 are taken"};
    }
    return std::shared_ptr<const platform::RSAKey>(std::move(result));
}

std::size_t OpenSslKey::blockSize() const noexcept {
    return static_cast<std::size_t>(library_.EVP_PKEY_get_size(key_));
}

Result<platform::Bytes> OpenSslKey::encrypt(Slice plain, RSAEncryption padding) const {
    const OpenSslErrors errors(library_);
    const Parameters parameters(library_, padding);
    const auto context = contextOf(library_, key_);
    Bytes cipher(blockSize());
    std::size_t size = cipher.size();
    if (context == nullptr || library_.EVP_PKEY_encrypt_init_ex(context.get(), parameters.list()) != 1 ||
        library_.EVP_PKEY_encrypt(context.get(), cipher.data(), &size, plain.data(), plain.size()) != 1) {
        return errors.error("encryption failed");
    }
    cipher.resize(size);
    return cipher;
}

Result<platform::Bytes> OpenSslKey::decrypt(Slice cipher, RSAEncryption padding) const {
    if (!isPrivate_) {
        return Error{"a public key cannot decrypt"};
    }
    const OpenSslErrors errors(library_);
    const Parameters parameters(library_, padding);
    const auto context = contextOf(library_, key_);
    if (context == nullptr || library_.EVP_PKEY_decrypt_init_ex(context.get(), parameters.list()) != 1) {
        return errors.error("decryption cannot begin");
    }
    Bytes plain(blockSize());
    std::size_t size = plain.size();
    if (library_.EVP_PKEY_decrypt(context.get(), plain.data(), &size, cipher.data(), cipher.size()) != 1) {
        return Error{"decryption failed"}; // and not why: whoever sends ciphertexts would learn from it
    }
    plain.resize(size);
    return plain;
}

Result<platform::Bytes> OpenSslKey::sign(Slice message, RSASignature scheme) const {
    if (!isPrivate_) {
        return Error{"a public key cannot sign"};
    }
    const OpenSslErrors errors(library_);
    const auto parts = partsOf(scheme);
    const Parameters parameters(library_, parts);
    const Owner<EVP_MD_CTX> context(library_.EVP_MD_CTX_new(), library_.EVP_MD_CTX_free);
    Bytes signature(blockSize());
    std::size_t size = signature.size();
    if (context == nullptr ||
        library_.EVP_DigestSignInit_ex(context.get(), nullptr, parts.digest, nullptr, nullptr, key_,
                                       parameters.list()) != 1 ||
        library_.EVP_DigestSign(context.get(), signature.data(), &size, message.data(), message.size()) != 1) {
        return errors.error("signing failed");
    }
    signature.resize(size);
    return signature;
}

Result<bool> OpenSslKey::verify(Slice message, Slice signature, RSASignature scheme) const {
    const OpenSslErrors errors(library_);
    const auto parts = partsOf(scheme);
    const Parameters parameters(library_, parts);
    const Owner<EVP_MD_CTX> context(library_.EVP_MD_CTX_new(), library_.EVP_MD_CTX_free);
    if (context == nullptr || library_.EVP_DigestVerifyInit_ex(context.get(), nullptr, parts.digest, nullptr, nullptr,
                                                               key_, parameters.list()) != 1) {
        return errors.error("the signature cannot be checked");
    }
    return library_.EVP_DigestVerify(context.get(), signature.data(), signature.size(), message.data(),
                                     message.size()) == 1;
}

} // namespace zentavo::linux_port
