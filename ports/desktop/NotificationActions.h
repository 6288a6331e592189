#pragma once

#include <string>
#include <vector>

#include "zentavo/platform/Notification.h"

namespace zentavo::desktop {

/// Something that the user can do with a notification on the desktop. The notification service knows it by `key`, which
/// is ours; who asked for the button knows it by `identifier`, which came over the net.
struct DesktopAction {
    std::string key;
    std::string label;
    std::string identifier;

    friend bool operator==(const DesktopAction&, const DesktopAction&) = default;
};

/// The key of the notification itself is the service's: what a click beside all buttons does.
inline constexpr const char* defaultKey = "default";
/// The key of the button that shows all of a rich notification. It has no identifier: nobody is told.
inline constexpr const char* expandKey = "expand";
/// The category of rich notifications.
inline constexpr const char* richCategory = "ZentavoNotificationContent";

/// The click first, then the buttons of the push itself ("aps.actionButtons"), those of its category, and the one that
/// expands it. A button without id or label is left out, and so is a second one with an id that is there.
std::vector<DesktopAction> actionsOf(const platform::NotificationContent& content,
                                     const std::vector<platform::NotificationCategory>& categories, bool expandable);

} // namespace zentavo::desktop
