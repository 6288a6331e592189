#include "ports/desktop/WebPushKeys.h"

#include <algorithm>
#include <vector>

#include <openssl/crypto.h>
#include <openssl/obj_mac.h>

#include "ports/desktop/OpenSsl.h"
#include "zentavo/foundation/Base64.h"

namespace zentavo::desktop {

namespace {

/// Between the private key and the secret; no character of base64url.
constexpr char separator = '.';

template <std::size_t size>
bool readInto(std::string_view text, std::array<std::uint8_t, size>& bytes) {
    auto decoded = base64::decodeURL(text);
    const bool fits = decoded && decoded->size() == size;
    if (fits) {
        std::copy(decoded->begin(), decoded->end(), bytes.begin());
    }
    if (decoded) {
        OPENSSL_cleanse(decoded->data(), decoded->size());
    }
    return fits;
}

} // namespace

WebPushKeys WebPushKeys::make(platform::Random& random) {
    WebPushKeys keys;
    random.fill(keys.auth_);
    do { // one in 2^32 is drawn again
        random.fill(keys.privateKey_);
    } while (!keys.complete());
    return keys;
}

Result<WebPushKeys> WebPushKeys::read(std::string_view text) {
    const std::size_t middle = text.find(separator);
    WebPushKeys keys;
    if (middle == std::string_view::npos || !readInto(text.substr(0, middle), keys.privateKey_) ||
        !readInto(text.substr(middle + 1), keys.auth_)) {
        return Error{"the stored keys for pushes are damaged"};
    }
    if (!keys.complete()) {
        return Error{"the stored private key for pushes is none of its curve"};
    }
    return keys;
}

WebPushKeys::~WebPushKeys() {
    OPENSSL_cleanse(privateKey_.data(), privateKey_.size());
    OPENSSL_cleanse(auth_.data(), auth_.size());
}

std::string WebPushKeys::text() const { return base64::encodeURL(privateKey_) + separator + base64::encodeURL(auth_); }

std::string WebPushKeys::publicKeyText() const { return base64::encodeURL(publicKey_); }

std::string WebPushKeys::authText() const { return base64::encodeURL(auth_); }

bool WebPushKeys::complete() {
    prepareOpenSsl();
    const Curve curve(EC_GROUP_new_by_curve_name(NID_X9_62_prime256v1));
    const CurvePoint point(EC_POINT_new(curve.get()));
    const BigNumber factor(BN_bin2bn(privateKey_.data(), static_cast<int>(privateKey_.size()), nullptr));
    BN_set_flags(factor.get(), BN_FLG_CONSTTIME);
    return BN_is_zero(factor.get()) == 0 && BN_cmp(factor.get(), EC_GROUP_get0_order(curve.get())) < 0 &&
           EC_POINT_mul(curve.get(), point.get(), factor.get(), nullptr, nullptr, nullptr) == 1 &&
           EC_POINT_point2oct(curve.get(), point.get(), POINT_CONVERSION_UNCOMPRESSED, publicKey_.data(),
                              publicKey_.size(), nullptr) == publicKey_.size();
}

} // namespace zentavo::desktop
