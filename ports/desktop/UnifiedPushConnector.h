#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Platform.h"

namespace zentavo::desktop {

/// Receives pushes through a distributor of the user's session (UnifiedPush, both versions of its interfaces): keeps the
/// registration, renews it at each start and whenever the distributor comes back, and decrypts what arrives.
///
/// The registration lives in the program's standard suite. What a push says is not looked at here.
class ZENTAVO_EXPORT UnifiedPushConnector {
public:
    struct Settings {
        std::string service;     ///< our name on the bus, to be owned after `start`
        std::string description; ///< says to the user who receives
        std::string vapid;       ///< public key of the sender, for distributors that want one; or empty
    };
    /// Called on the bus's thread.
    struct Handlers {
        /// A push for us, decrypted, 1 to 4096 bytes. One that is delivered again within the last hundred is not told.
        /// The distributor is answered afterwards, and forgets it: what is to survive the process is kept by then.
        std::function<void(std::string body)> message;
        /// What senders need from now on: see `PushRegistration::senderText`.
        std::function<void(std::string senderText)> tokenChanged;
        /// Why there are no pushes. After this nothing happens until the next `request`, but for one more attempt after
        /// `retryPause` where the distributor has refused.
        std::function<void(std::string reason)> registrationFailed;
    };

    /// A push has no more bytes, encrypted or not.
    static constexpr std::size_t maximumMessageBytes = 4096;
    /// Within the minute for which a service stays at least.
    static constexpr std::chrono::seconds retryPause{30};

    /// `bus` outlives this object.
    UnifiedPushConnector(SessionBus& bus, const platform::Platform& platform, Settings settings, Handlers handlers);
    ~UnifiedPushConnector();

    /// Serves the object that distributors call, and renews a registration that is there. Any thread, once.
    void start();
    /// The app wants pushes. Answered by `tokenChanged` or `registrationFailed`: at once where it is known, else when the
    /// distributor has said it. Any thread.
    void request();

private:
    class State;
    SessionBus& bus_;
    const std::shared_ptr<State> state_;
};

} // namespace zentavo::desktop
