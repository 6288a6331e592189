#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/MainQueue.h"
#include "zentavo/platform/UserNotifications.h"

namespace zentavo::desktop {

/// How a notification centre reaches its delegate: on the main queue, and with every answer once. Any thread.
class DelegateDoor {
public:
    explicit DelegateDoor(std::shared_ptr<platform::MainQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {}

    /// Later blocks go there.
    void setMainQueue(std::shared_ptr<platform::MainQueue> mainQueue);
    /// `center` is what delegates are told of; it is kept alive while one is told.
    using Center = std::shared_ptr<platform::UserNotifications>;
    void setDelegate(const Center& center, std::weak_ptr<platform::UserNotificationDelegate> delegate);

    void onMain(platform::Block block) const;
    /// Tells the delegate, or the next one while there is none.
    void tell(const Center& center, platform::NotificationResponse response);
    /// Asks the delegate how to show a notification; everything is shown where there is none. On the main queue.
    void ask(const Center& center, const platform::Notification& notification,
             std::function<void(std::uint32_t options)> completion) const;

private:
    void tellWaiting(const Center& center);

    mutable Mutex mutex_;
    std::shared_ptr<platform::MainQueue> mainQueue_ ZENTAVO_GUARDED_BY(mutex_);
    std::weak_ptr<platform::UserNotificationDelegate> delegate_ ZENTAVO_GUARDED_BY(mutex_);
    std::deque<platform::NotificationResponse> waiting_ ZENTAVO_GUARDED_BY(mutex_);
};

/// Every way to show a notification, as a mask.
inline constexpr std::uint32_t presentEverything =
    platform::presentBadge | platform::presentSound | platform::presentAlert;

} // namespace zentavo::desktop
