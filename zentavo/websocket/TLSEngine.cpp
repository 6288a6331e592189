#include "zentavo/websocket/TLSEngine.h"

#include <new>

#include <asio/error.hpp>

namespace zentavo::websocket {
namespace {

/// Errors of OpenSSL, by its numbers; those below 0 are what checking a certificate came to, with the sign turned.
class TLSErrors final : public std::error_category {
public:
    const char* name() const noexcept override { return "TLS"; }
    std::string message(int value) const override {
        const auto& library = OpenSslLibrary::shared();
        return value < 0 ? std::string("certificate refused: ") + library->X509_verify_cert_error_string(-value)
                         : library->describe(static_cast<unsigned long>(value));
    }
};

// More than what is written at a time, with the answers that TLS gives by itself in between.
constexpr std::size_t mostUnsent = 262144;

asio::error_code makeError(int value) {
    // Never destroyed: the I/O thread may outlive every static object.
    static const auto& category = *new TLSErrors;
    return {value, category};
}

} // namespace

TLSEngine::TLSEngine(const OpenSslLibrary& library, SSL* handle)
    : library_(library), handle_(handle, library.SSL_free), input_(library.BIO_new(library.BIO_s_mem())),
      output_(library.BIO_new(library.BIO_s_mem())) {
    if (handle == nullptr || input_ == nullptr || output_ == nullptr) {
        throw std::bad_alloc();
    }
    library.SSL_set_bio(handle, input_, output_);
}

TLSEngine::TLSEngine(const TLSContext& context, const std::string& host)
    : TLSEngine(context.library(), context.library().SSL_new(context.handle())) {
    SSL* handle = handle_.get();
    library_.SSL_set_connect_state(handle);
    library_.ERR_clear_error();
    // An address is looked for among a certificate's addresses, and is not named to the server.
    if (library_.X509_VERIFY_PARAM_set1_ip_asc(library_.SSL_get0_param(handle), host.c_str()) == 1) {
        return;
    }
    library_.ERR_clear_error();
    // The latter is what OpenSSL's macro for this does, without its old-style cast.
    if (library_.SSL_set1_host(handle, host.c_str()) != 1 ||
        library_.SSL_ctrl(handle, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name,
                          const_cast<char*>(host.c_str())) != 1) {
        outcome(0);
    }
}

TLSEngine::TLSEngine(const TLSContext& context)
    : TLSEngine(context.library(), context.library().SSL_new(context.handle())) {
    library_.SSL_set_accept_state(handle_.get());
}

TLSEngine::Step TLSEngine::outcome(int result) {
    switch (library_.SSL_get_error(handle_.get(), result)) {
    case SSL_ERROR_NONE:
        return Step::done;
    case SSL_ERROR_WANT_READ:
        return Step::needsInput;
    case SSL_ERROR_ZERO_RETURN:
        return Step::ended;
    default:
        break;
    }
    const unsigned long error = library_.ERR_get_error();
    const bool refused = ERR_GET_LIB(error) == ERR_LIB_SSL && ERR_GET_REASON(error) == SSL_R_CERTIFICATE_VERIFY_FAILED;
    const auto value = refused ? -library_.SSL_get_verify_result(handle_.get()) : static_cast<long>(error);
    error_ = makeError(value != 0 ? static_cast<int>(value) : -X509_V_ERR_UNSPECIFIED);
    return Step::failed;
}

TLSEngine::Step TLSEngine::handshake() {
    if (error_) {
        return Step::failed;
    }
    library_.ERR_clear_error();
    return outcome(library_.SSL_do_handshake(handle_.get()));
}

TLSEngine::Step TLSEngine::read(std::span<char> into, std::size_t& size) {
    size = 0;
    if (!error_ && library_.BIO_ctrl_pending(output_) > mostUnsent) {
        error_ = asio::error::no_buffer_space;
    }
    while (!error_ && size < into.size()) {
        std::size_t more = 0;
        library_.ERR_clear_error();
        const auto step = outcome(library_.SSL_read_ex(handle_.get(), into.data() + size, into.size() - size, &more));
        if (step != Step::done) {
            return size != 0 ? Step::done : step; // what comes next says it again
        }
        size += more;
    }
    return error_ ? Step::failed : Step::done;
}

TLSEngine::Step TLSEngine::write(std::string_view bytes) {
    if (error_) {
        return Step::failed;
    }
    std::size_t taken = 0;
    library_.ERR_clear_error();
    return outcome(library_.SSL_write_ex(handle_.get(), bytes.data(), bytes.size(), &taken));
}

void TLSEngine::receive(std::string_view bytes) {
    library_.BIO_write(input_, bytes.data(), static_cast<int>(bytes.size()));
}

void TLSEngine::takeOutput(std::string& bytes) {
    bytes.resize(library_.BIO_ctrl_pending(output_));
    if (!bytes.empty()) {
        library_.BIO_read(output_, bytes.data(), static_cast<int>(bytes.size()));
    }
}

} // namespace zentavo::websocket
