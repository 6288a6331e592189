#pragma once

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>

namespace zentavo::linux_port {

#define ZENTAVO_OPENSSL_FUNCTIONS(X)                                                                                   \
    X(ERR_peek_last_error)                                                                                             \
    X(ERR_pop_to_mark)                                                                                                 \
    X(ERR_reason_error_string)                                                                                         \
    X(ERR_set_mark)                                                                                                    \
    X(EVP_DigestSign)                                                                                                  \
    X(EVP_DigestSignInit_ex)                                                                                           \
    X(EVP_DigestVerify)                                                                                                \
    X(EVP_DigestVerifyInit_ex)                                                                                         \
    X(EVP_MD_CTX_free)                                                                                                 \
    X(EVP_MD_CTX_new)                                                                                                  \
    X(EVP_PKEY_CTX_free)                                                                                               \
    X(EVP_PKEY_CTX_new_from_name)                                                                                      \
    X(EVP_PKEY_CTX_new_from_pkey)                                                                                      \
    X(EVP_PKEY_decrypt)                                                                                                \
    X(EVP_PKEY_decrypt_init_ex)                                                                                        \
    X(EVP_PKEY_encrypt)                                                                                                \
    X(EVP_PKEY_encrypt_init_ex)                                                                                        \
    X(EVP_PKEY_fromdata)                                                                                               \
    X(EVP_PKEY_fromdata_init)                                                                                          \
    X(EVP_PKEY_free)                                                                                                   \
    X(EVP_PKEY_get_bits)                                                                                               \
    X(EVP_PKEY_get_size)                                                                                               \
    X(OPENSSL_cleanse)                                                                                                 \
    X(OSSL_PARAM_construct_BN)                                                                                         \
    X(OSSL_PARAM_construct_end)                                                                                        \
    X(OSSL_PARAM_construct_uint)                                                                                       \
    X(OSSL_PARAM_construct_utf8_string)

/// The functions of OpenSSL 3 that we call, as members of their own names. The library is opened when the first key is
/// made, since a program without keys has no use for its five megabytes, and stays open until the process ends.
struct OpenSslLibrary {
#define ZENTAVO_OPENSSL_MEMBER(name) decltype(&::name) name = nullptr;
    ZENTAVO_OPENSSL_FUNCTIONS(ZENTAVO_OPENSSL_MEMBER)
#undef ZENTAVO_OPENSSL_MEMBER

    /// Null when OpenSSL 3 is not installed. Any thread.
    static const OpenSslLibrary* shared();
};

} // namespace zentavo::linux_port
