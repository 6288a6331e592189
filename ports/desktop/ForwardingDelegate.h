#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string>

#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/SystemLog.h"
#include "zentavo/platform/UserNotificationDelegate.h"
#include "zentavo/platform/UserNotifications.h"

namespace zentavo::desktop {

/// Asks and tells the app, in another process, what the notification centre of this one asks and tells. Any thread;
/// completions are called on the bus's.
class ForwardingDelegate final : public platform::UserNotificationDelegate,
                                 public std::enable_shared_from_this<ForwardingDelegate> {
public:
    /// How long the app may think about how a notification is shown; then it is shown with everything.
    static constexpr std::chrono::milliseconds presentationTimeout{2'000};
    /// How long the app may take to start.
    static constexpr std::chrono::milliseconds responseTimeout{30'000};
    /// An app that is there but has nothing to answer with (yet) is asked this often, with the pause in between; after
    /// that, when it comes anew.
    static constexpr unsigned attempts = 5;
    static constexpr std::chrono::milliseconds pause{500};
    /// Of more, the oldest are dropped.
    static constexpr std::size_t maximumWaiting = platform::UserNotifications::maximumWaitingResponses;

    /// `app` is the app's name on the bus.
    static std::shared_ptr<ForwardingDelegate> make(std::shared_ptr<SessionBus> bus, std::string app,
                                                    std::shared_ptr<platform::SystemLog> log);

    /// Asks the app where it runs; it is not started for this. Where it does not, everything is shown.
    void userNotificationCenter(platform::UserNotifications& center, const platform::Notification& willPresent,
                                std::function<void(std::uint32_t options)> withCompletionHandler) override;
    /// Tells the app, which is started for it, of one answer after the other. The completion says that the answer is in
    /// good hands, which may still be ours: what cannot be told waits until the app appears.
    void userNotificationCenter(platform::UserNotifications& center, const platform::NotificationResponse& didReceive,
                                std::function<void()> withCompletionHandler) override;

    /// Answers that the app has not been told: while there are some, this process had better stay.
    std::size_t waiting() const;

private:
    ForwardingDelegate(std::shared_ptr<SessionBus> bus, std::string app, std::shared_ptr<platform::SystemLog> log);

    SessionBus::Call call(const char* method, const std::string& text) const;
    void tellNext();
    void told(const Result<Variant>& outcome);

    const std::shared_ptr<SessionBus> bus_;
    const std::string app_;
    const std::shared_ptr<platform::SystemLog> log_;
    mutable Mutex mutex_;
    std::deque<std::string> waiting_ ZENTAVO_GUARDED_BY(mutex_);
    bool telling_ ZENTAVO_GUARDED_BY(mutex_) = false;
    bool present_ ZENTAVO_GUARDED_BY(mutex_) = false;
    unsigned failures_ ZENTAVO_GUARDED_BY(mutex_) = 0;
};

} // namespace zentavo::desktop
