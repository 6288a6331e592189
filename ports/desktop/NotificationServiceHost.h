#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "ports/desktop/BusNames.h"
#include "ports/desktop/PushQueue.h"
#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Platform.h"

namespace zentavo::desktop {

/// A notification-service extension between the bus and the notification centre: receives pushes, has them rewritten and
/// shown, and answers the app and the content extension. Ends by itself, so that an update of the program takes effect,
/// when a minute has passed in which nothing came and nothing was shown.
class ZENTAVO_EXPORT NotificationServiceHost : public std::enable_shared_from_this<NotificationServiceHost> {
public:
    static constexpr std::chrono::seconds quiet{60};
    /// Longer than a process needs to end that has given its name back.
    static constexpr std::chrono::seconds settling{30};

    struct Settings {
        BusNames names;
        std::string description; ///< says to the user who receives pushes
        std::string vapid;       ///< public key of the sender, for distributors that want one; or empty
    };
    struct Handlers {
        /// The content extension says that the user has answered a notification. On the bus's thread.
        std::function<void(platform::NotificationResponse response)> respond;
        /// The app has asked for pushes: it can be told things now. On the bus's thread.
        std::function<void()> appIsReady = {};
        /// Whether something else than pushes keeps this process busy. On a queue of `platform`.
        std::function<bool()> busy;
        /// Our name has been ours for so long (`settling`) that no process before this one is at work any more. Once, on a
        /// queue of `platform`.
        std::function<void()> alone = {};
        /// It is over; `name` says whether our name on the bus was ours at all. Once, on a queue of `platform` or the
        /// bus's thread.
        std::function<void(bool name)> ended;
    };

    /// Shows on the notification centre that is attached to `platform`. `bus` outlives this object.
    static std::shared_ptr<NotificationServiceHost> make(std::shared_ptr<platform::Platform> platform, SessionBus& bus,
                                                         Settings settings, PushQueue::ExtensionFactory makeExtension,
                                                         Handlers handlers);
    ~NotificationServiceHost();

    /// Any thread, once.
    void start();
    /// Gives the name on the bus back, so that whoever comes next starts the program anew, shows what is under way, and
    /// says `ended`. Any thread; nothing the second time.
    void end();

private:
    class State;
    explicit NotificationServiceHost(std::shared_ptr<State> state);
    const std::shared_ptr<State> state_;
};

} // namespace zentavo::desktop
