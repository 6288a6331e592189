#pragma once

#include <cstdint>
#include <vector>

#include "ports/desktop/AppOnDesktop.h"
#include "ports/desktop/NotificationActions.h"
#include "ports/desktop/Variant.h"

namespace zentavo::desktop {

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
