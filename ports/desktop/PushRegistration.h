#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ports/desktop/WebPushKeys.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/platform/Preferences.h"
#include "zentavo/platform/Random.h"

namespace zentavo::desktop {

/// What is kept of a registration for pushes.
struct PushRegistration {
    /// Of the interfaces between distributor and receiver: with the first, pushes come as they were sent; with the
    /// second, encrypted.
    static constexpr int plainVersion = 1;
    static constexpr int encryptedVersion = 2;

    /// Names the registration between distributor and receiver. Whoever knows it can send pushes: nobody else is told.
    std::string token;
    std::string distributor; ///< its name on the bus
    int version = encryptedVersion;
    WebPushKeys keys;
    std::string endpoint; ///< the URL that pushes are sent to; empty until the distributor says it

    static PushRegistration make(std::string distributor, platform::Random& random);

    /// What senders need: the endpoint, and for encrypted pushes the keys in the fragment, which never leaves the
    /// sender. Empty without an endpoint.
    std::string senderText() const;
};

/// Keeps the registration in a preference suite of the receiver's. Any thread.
class PushRegistrationStore {
public:
    explicit PushRegistrationStore(std::shared_ptr<platform::Preferences> suite) : suite_(std::move(suite)) {}

    /// None where there is none; an error where it cannot be read any more.
    Result<std::optional<PushRegistration>> load() const;
    void save(const PushRegistration& registration) const;
    void drop() const;

    /// The distributor that the host wants, or empty.
    std::string chosenDistributor() const;
    /// The one that was used last, or empty; it outlives the registration.
    std::string lastDistributor() const;

private:
    const std::shared_ptr<platform::Preferences> suite_;
};

} // namespace zentavo::desktop
