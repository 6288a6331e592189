#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ports/desktop/NotificationActions.h"
#include "ports/desktop/Variant.h"

namespace zentavo::desktop {

/// Whose notifications they are, as the desktop knows the app.
struct AppOnDesktop {
    std::string name;         ///< for readers
    std::string desktopEntry; ///< the app's file "….desktop" without the suffix; its icon has the same name
};

/// What a notification service can do, of what matters to us.
struct ServerCapabilities {
    bool actions = false;
    bool bodyMarkup = false;
};

/// The arguments of org.freedesktop.Notifications.Notify. `replaces` is 0 for a new notification.
Variant notifyArguments(const AppOnDesktop& app, const platform::NotificationContent& content,
                        const std::vector<DesktopAction>& actions, const ServerCapabilities& capabilities,
                        std::uint32_t presentation, std::uint32_t replaces);

} // namespace zentavo::desktop
