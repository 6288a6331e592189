#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "ports/desktop/AppWindows.h"
#include "zentavo/core/Zentavo.h"

namespace zentavo::desktop {

/// What comes of `Application::registerForRemoteNotifications`. Called on the main queue; either may be empty.
struct RemoteNotificationsHandlers {
    /// Where pushes to this user's device are sent from now on: after a registration, and whenever it changes. The SDK
    /// wants its bytes:
    ///
    ///     [sdk](std::string token) {
    ///         sdk->registerForNotification({reinterpret_cast<const std::uint8_t*>(token.data()), token.size()});
    ///     }
    std::function<void(std::string token)> onToken;
    std::function<void(std::string reason)> onFailure;
};

/// Once for the process, before or after anything is attached; again to replace them. The latest outcome that came while
/// nobody could be told waits. Any thread.
ZENTAVO_EXPORT void setRemoteNotificationsHandlers(RemoteNotificationsHandlers handlers);

/// Lets the SDK show notifications on the desktop, learn what the user does with them, and register for pushes: for
/// hosts without a toolkit (`zentavo::gtk::attach` does the same and more). Main queue and the rest of what is attached
/// stay as they are. False when nothing could be attached.
///
/// A process has one connection to the user's message bus, and one place there where its extensions and clicks on
/// notifications find it: further calls, also with another instance, use what is there. Without a bus notifications fail
/// with an error, and nothing else happens.
ZENTAVO_EXPORT bool attach(Zentavo& sdk, AppWindows windows = {});
/// The same for `Zentavo::shared()`.
ZENTAVO_EXPORT bool attach(AppWindows windows = {});

/// The number on the app's icon; 0 takes it away, as an app does once the user has seen what there was to see. The
/// extension's own count, which pushes go on from, is another. Any thread; nothing before `attach`.
ZENTAVO_EXPORT void setBadgeCount(Zentavo& sdk, std::int64_t count);
/// The same for `Zentavo::shared()`.
ZENTAVO_EXPORT void setBadgeCount(std::int64_t count);

} // namespace zentavo::desktop
