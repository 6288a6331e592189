#pragma once

#include <functional>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Notification.h"

namespace zentavo::platform {

/// Rewrites a push before it is shown, in a process that the system starts for it. A port makes one for each push.
class ZENTAVO_EXPORT NotificationServiceExtension {
public:
    using ContentHandler = std::function<void(NotificationContent)>;

    virtual ~NotificationServiceExtension() = default;

    /// Called on a thread that may be kept waiting: not the main queue, and none that answers of the network need.
    /// `withContentHandler` is called exactly once, on this thread or the one of `serviceExtensionTimeWillExpire`.
    virtual void didReceive(NotificationRequest request, ContentHandler withContentHandler) = 0;

    /// The time is nearly over: what there is now is handed back. Any thread, also while `didReceive` works, and after
    /// its end. A port calls it at most 30 seconds after `didReceive`.
    virtual void serviceExtensionTimeWillExpire() = 0;
};

} // namespace zentavo::platform
