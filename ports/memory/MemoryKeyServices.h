#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "zentavo/platform/KeyServices.h"

namespace zentavo::testing {

/// Key services without cryptography: takes any bytes for a key, remembers what it was asked to sign, and signs as the
/// test says. What was signed so verifies; encryption is an error. Any thread.
class ZENTAVO_EXPORT MemoryKeyServices final : public platform::KeyServices {
public:
    struct Signing {
        platform::Bytes message;
        platform::RSASignature scheme;
    };

    MemoryKeyServices();

    /// The outcome of everything that is signed from now on; "signature" unless told otherwise.
    void setSignature(Result<platform::Bytes> outcome);
    /// From now on no key is made, for this reason; none ends that.
    void refuseKeys(std::optional<Error> reason);

    /// Everything that was to be signed so far, oldest first, also where signing failed.
    std::vector<Signing> signings() const;

    Result<std::shared_ptr<const platform::RSAKey>> privateKey(std::span<const std::uint8_t> pkcs1) const override;
    Result<std::shared_ptr<const platform::RSAKey>> publicKey(std::span<const std::uint8_t> pkcs1) const override;

private:
    class Key;

    Result<std::shared_ptr<const platform::RSAKey>> makeKey(bool isPrivate) const;

    /// Keys hold it too, and may outlive these services.
    struct State;
    const std::shared_ptr<State> state_;
};

} // namespace zentavo::testing
