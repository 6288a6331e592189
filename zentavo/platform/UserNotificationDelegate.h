#pragma once

#include <cstdint>
#include <functional>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Notification.h"

namespace zentavo::platform {

class UserNotifications;

/// Whom the notification centre asks and tells. Its members are called on the main queue; each calls its completion
/// exactly once, there or elsewhere.
class ZENTAVO_EXPORT UserNotificationDelegate {
public:
    virtual ~UserNotificationDelegate() = default;

    /// A notification arrived while the app is in front. The completion is given a mask of `PresentationOption`s.
    virtual void userNotificationCenter(UserNotifications& center, const Notification& willPresent,
                                        std::function<void(std::uint32_t options)> withCompletionHandler) = 0;
    /// The user answered a notification. Told once for each answer.
    virtual void userNotificationCenter(UserNotifications& center, const NotificationResponse& didReceive,
                                        std::function<void()> withCompletionHandler) = 0;
};

} // namespace zentavo::platform
