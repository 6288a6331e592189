#pragma once

#include <memory>

#include <openssl/bn.h>
#include <openssl/ec.h>
#include <openssl/evp.h>

namespace zentavo::desktop {

template <auto release>
struct OpenSslRelease {
    template <class T>
    void operator()(T* object) const noexcept {
        release(object);
    }
};

/// Holds an object of OpenSSL's; what was secret in it is overwritten when it goes.
using BigNumber = std::unique_ptr<BIGNUM, OpenSslRelease<BN_clear_free>>;
using Curve = std::unique_ptr<EC_GROUP, OpenSslRelease<EC_GROUP_free>>;
using CurvePoint = std::unique_ptr<EC_POINT, OpenSslRelease<EC_POINT_clear_free>>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, OpenSslRelease<EVP_CIPHER_CTX_free>>;

/// To be called before anything else of OpenSSL's: its threads' data is not tidied up when the process exits, since
/// the bus's thread may be using it then. Any thread, any number of times.
void prepareOpenSsl();

} // namespace zentavo::desktop
