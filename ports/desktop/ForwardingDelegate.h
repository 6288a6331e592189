#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Platform.h"
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
    /// An app that has its name but nothing to answer with (yet) is told again after the first pause, then after one that
    /// is twice as long, up to the last, for as long as it is there.
    static constexpr std::chrono::milliseconds firstPause{500};
    static constexpr std::chrono::milliseconds lastPause{64'000};
    /// What could not be told in this time is dropped: the user has gone on to something else.
    static constexpr std::chrono::minutes maximumAge{10};
    /// Of more, the oldest are dropped.
    static constexpr std::size_t maximumWaiting = platform::UserNotifications::maximumWaitingResponses;

    /// `app` is the app's name on the bus.
    static std::shared_ptr<ForwardingDelegate> make(std::shared_ptr<SessionBus> bus, std::string app,
                                                    const platform::Platform& platform);

    /// Asks the app where it runs; it is not started for this. Where it does not, everything is shown.
    void userNotificationCenter(platform::UserNotifications& center, const platform::Notification& willPresent,
                                std::function<void(std::uint32_t options)> withCompletionHandler) override;
    /// Tells the app, which is started for it, of one answer after the other. The completion says that the answer is in
    /// good hands, which may still be ours: what cannot be told waits until the app appears. That a notification was put
    /// away is told to an app that runs, and starts none.
    void userNotificationCenter(platform::UserNotifications& center, const platform::NotificationResponse& didReceive,
                                std::function<void()> withCompletionHandler) override;

    /// The app can be told now: what waits need not wait for the next attempt.
    void tellNow();
    /// Answers that the app has not been told: while there are some, this process had better stay. Those that are too old
    /// are dropped first.
    std::size_t waiting();

private:
    struct Waiting {
        std::string text;
        std::chrono::nanoseconds since{0}; ///< of the steady clock
        bool mayStart = true;              ///< whether the app is started for it
    };

    ForwardingDelegate(std::shared_ptr<SessionBus> bus, std::string app, const platform::Platform& platform);

    SessionBus::Call call(const char* method, const std::string& text) const;
    void tellNext();
    void told(const Result<Variant>& outcome);
    void tellAgain(std::uint64_t round);
    void dropOld();

    const std::shared_ptr<SessionBus> bus_;
    const std::string app_;
    const std::shared_ptr<platform::SystemLog> log_;
    const std::shared_ptr<platform::Clock> clock_;
    const std::shared_ptr<platform::Random> random_;
    mutable Mutex mutex_;
    std::deque<Waiting> waiting_ ZENTAVO_GUARDED_BY(mutex_);
    bool telling_ ZENTAVO_GUARDED_BY(mutex_) = false;
    bool present_ ZENTAVO_GUARDED_BY(mutex_) = false;
    unsigned failures_ ZENTAVO_GUARDED_BY(mutex_) = 0; ///< in a row
    /// Of the attempt that is due next: a pause that another has overtaken ends without one.
    std::uint64_t round_ ZENTAVO_GUARDED_BY(mutex_) = 0;
};

} // namespace zentavo::desktop
