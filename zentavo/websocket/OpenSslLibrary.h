#pragma once

#include <string>

#include <openssl/err.h>
#include <openssl/ssl.h>

#include "zentavo/foundation/Result.h"

namespace zentavo::websocket {

#define ZENTAVO_TLS_FUNCTIONS(X)                                                                                       \
    X(BIO_ctrl_pending)                                                                                                \
    X(BIO_new)                                                                                                         \
    X(BIO_read)                                                                                                        \
    X(BIO_s_mem)                                                                                                       \
    X(BIO_write)                                                                                                       \
    X(ERR_clear_error)                                                                                                 \
    X(ERR_get_error)                                                                                                   \
    X(ERR_reason_error_string)                                                                                         \
    X(OPENSSL_init_crypto)                                                                                             \
    X(OPENSSL_thread_stop)                                                                                             \
    X(SSL_CTX_ctrl)                                                                                                    \
    X(SSL_CTX_free)                                                                                                    \
    X(SSL_CTX_load_verify_locations)                                                                                   \
    X(SSL_CTX_new)                                                                                                     \
    X(SSL_CTX_set_default_verify_paths)                                                                                \
    X(SSL_CTX_set_options)                                                                                             \
    X(SSL_CTX_set_verify)                                                                                              \
    X(SSL_CTX_use_PrivateKey_file)                                                                                     \
    X(SSL_CTX_use_certificate_chain_file)                                                                              \
    X(SSL_ctrl)                                                                                                        \
    X(SSL_do_handshake)                                                                                                \
    X(SSL_free)                                                                                                        \
    X(SSL_get0_param)                                                                                                  \
    X(SSL_get_error)                                                                                                   \
    X(SSL_get_verify_result)                                                                                           \
    X(SSL_new)                                                                                                         \
    X(SSL_read_ex)                                                                                                     \
    X(SSL_set1_host)                                                                                                   \
    X(SSL_set_accept_state)                                                                                            \
    X(SSL_set_bio)                                                                                                     \
    X(SSL_set_connect_state)                                                                                           \
    X(SSL_write_ex)                                                                                                    \
    X(TLS_client_method)                                                                                               \
    X(TLS_server_method)                                                                                               \
    X(X509_VERIFY_PARAM_set1_ip_asc)                                                                                   \
    X(X509_verify_cert_error_string)

/// The functions of OpenSSL 3 that TLS needs, as members of their own names. The library is opened with the first wss
/// connection: one without TLS has no use for its megabyte.
struct OpenSslLibrary {
#define ZENTAVO_TLS_MEMBER(name) decltype(&::name) name = nullptr;
    ZENTAVO_TLS_FUNCTIONS(ZENTAVO_TLS_MEMBER)
#undef ZENTAVO_TLS_MEMBER

    /// Opened when first asked for, and then for good. Any thread.
    static const Result<OpenSslLibrary>& shared();
    static Result<OpenSslLibrary> open(const char* file);

    /// What went wrong first since `ERR_clear_error`, on this thread.
    std::string firstError() const;
    std::string describe(unsigned long error) const;
};

} // namespace zentavo::websocket
