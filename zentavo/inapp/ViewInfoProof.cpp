#include "zentavo/inapp/ViewInfoProof.h"

#include <cmath>
#include <string>

#include "zentavo/foundation/Fault.h"
#include "zentavo/rsa/PrivateKey.h"

namespace zentavo {

namespace {

std::int64_t milliseconds(double seconds) {
    const double count = std::trunc(seconds * 1000);
    // 2^63, the first number that 64 bits with a sign cannot hold.
    constexpr double beyond = 9'223'372'036'854'775'808.0;
    if (!(count >= -beyond && count < beyond)) {
        fatalError("the clock's time cannot be told in milliseconds");
    }
    return static_cast<std::int64_t>(count);
}

} // namespace

Result<CDPDeliveryOperation::Proof> proveViewInfo(std::string_view body, std::string_view keyPEM,
                                                  const platform::Platform& platform) {
    if (keyPEM.empty()) {
        return Error{"this build carries no signing key (ZENTAVO_SIGNING_KEY)"};
    }
    CDPDeliveryOperation::Proof proof;
    proof.ts = milliseconds(platform.clock->secondsSince1970());
    proof.ri = platform.random->uuidText();
    const auto key = rsa::PrivateKey::fromPEM(keyPEM, *platform.keyServices);
    if (!key) {
        return key.error();
    }
    std::string message(body);
    message += std::to_string(proof.ts);
    message += proof.ri;
    auto signature = key->signText(message, rsa::Signature::pkcs1SHA256);
    if (!signature) {
        return signature.error();
    }
    proof.sn = *std::move(signature);
    return proof;
}

} // namespace zentavo
