#pragma once

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/URL.h"

namespace zentavo::platform {

/// The running application towards its desktop. Main queue only.
class ZENTAVO_EXPORT Application {
public:
    virtual ~Application() = default;

    /// Asks the system to register for remote notifications; a token then reaches the host, which hands it to
    /// `Zentavo::registerForNotification`. Without such a service nothing happens.
    virtual void registerForRemoteNotifications() = 0;
    /// Opens `url` with whatever the user prefers for it. Without a desktop nothing happens.
    virtual void open(const URL& url) = 0;
};

} // namespace zentavo::platform
