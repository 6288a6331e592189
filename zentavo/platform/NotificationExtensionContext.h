#pragma once

#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

/// What a content extension can ask for about the one notification that its window shows. Main queue only.
class ZENTAVO_EXPORT NotificationExtensionContext {
public:
    virtual ~NotificationExtensionContext() = default;

    /// Does what a tap on the notification itself does: opens the app and tells it so. False when the system has no such
    /// way.
    virtual bool performNotificationDefaultAction() = 0;
    /// How high the content would like to be; the window may become so, or not.
    virtual void setPreferredHeight(double points) = 0;
};

} // namespace zentavo::platform
