#include "zentavo/websocket/TLSContext.h"

#include <new>

namespace zentavo::websocket {

TLSContext::TLSContext(const OpenSslLibrary& library, const SSL_METHOD* method)
    : library_(library), handle_(library.SSL_CTX_new(method), library.SSL_CTX_free) {
    if (!handle_) {
        throw std::bad_alloc();
    }
    // What OpenSSL's macros for these do, without their old-style casts.
    library.SSL_CTX_ctrl(handle(), SSL_CTRL_SET_MIN_PROTO_VERSION, TLS1_2_VERSION, nullptr);
    library.SSL_CTX_ctrl(handle(), SSL_CTRL_MODE, SSL_MODE_RELEASE_BUFFERS, nullptr);
    // So sending never has to wait for something to be received.
    library.SSL_CTX_set_options(handle(), SSL_OP_NO_RENEGOTIATION);
}

TLSContext::Made TLSContext::make(decltype(OpenSslLibrary::TLS_client_method) OpenSslLibrary::*method) {
    const auto& library = OpenSslLibrary::shared();
    if (!library) {
        return library.error();
    }
    library->ERR_clear_error();
    return std::shared_ptr<TLSContext>(new TLSContext(*library, ((*library).*method)()));
}

Error TLSContext::error(const char* what) const { return Error{what + (": " + library_.firstError())}; }

TLSContext::Made TLSContext::client(const ClientOptions& options) {
    if (!options.verifyCertificate || !options.certificateAuthorities.empty()) {
        return makeClient(options);
    }
    // Never destroyed: the thread may outlive every static object.
    static auto& shared = *new std::shared_ptr<TLSContext>;
    if (!shared) {
        auto made = makeClient(options);
        if (!made) {
            return made;
        }
        shared = *std::move(made);
    }
    return shared;
}

TLSContext::Made TLSContext::makeClient(const ClientOptions& options) {
    auto made = make(&OpenSslLibrary::TLS_client_method);
    if (!made || !options.verifyCertificate) {
        return made;
    }
    const TLSContext& context = **made;
    const OpenSslLibrary& library = context.library();
    const auto& file = options.certificateAuthorities;
    const int read = file.empty() ? library.SSL_CTX_set_default_verify_paths(context.handle())
                                  : library.SSL_CTX_load_verify_locations(context.handle(), file.c_str(), nullptr);
    if (read != 1) {
        return context.error("the certificate authorities cannot be read");
    }
    library.SSL_CTX_set_verify(context.handle(), SSL_VERIFY_PEER, nullptr);
    return made;
}

TLSContext::Made TLSContext::server(const ServerOptions& options) {
    auto made = make(&OpenSslLibrary::TLS_server_method);
    if (!made) {
        return made;
    }
    const TLSContext& context = **made;
    const OpenSslLibrary& library = context.library();
    if (library.SSL_CTX_use_certificate_chain_file(context.handle(), options.certificateFile.c_str()) != 1) {
        return context.error("the certificate cannot be read");
    }
    if (library.SSL_CTX_use_PrivateKey_file(context.handle(), options.keyFile.c_str(), X509_FILETYPE_PEM) != 1) {
        return context.error("the certificate's key cannot be read");
    }
    return made;
}

} // namespace zentavo::websocket
