#pragma once

#include <functional>
#include <string>

namespace zentavo::desktop {

/// What notifications have to do with the app's windows. Called on the main queue; each may be empty.
struct AppWindows {
    /// Whether the user is looking at the app: only then the delegate is asked how to show a notification.
    std::function<bool()> isInFront = {};
    /// The user has opened a notification, and wants to see the app. A window that shows the desktop `activationToken`
    /// (Wayland's xdg-activation, X11's startup notification) may take the front; empty where the desktop gave none.
    std::function<void(const std::string& activationToken)> comeToFront = {};
};

} // namespace zentavo::desktop
