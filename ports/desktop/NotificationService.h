#pragma once

#include <functional>
#include <memory>
#include <string>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/NotificationServiceExtension.h"
#include "zentavo/platform/Platform.h"

namespace zentavo::desktop {

struct NotificationServiceOptions {
    /// Says to the user of the push distributor who receives; empty: the app's name.
    std::string description = {};
    /// The public key by which the sender of pushes signs (VAPID, base64url), for distributors that want one.
    std::string vapid = {};
};

/// All that the main function of a notification-service extension does:
///
///     int main() {
///         const auto platform = zentavo::linux_port::makeLinuxPlatform();
///         const auto sdk = std::make_shared<zentavo::Zentavo>(platform);
///         return zentavo::desktop::runNotificationService(
///             platform, [sdk] { return std::make_shared<zentavo::ZentavoNotificationService>(sdk); });
///     }
///
/// Receives the pushes of the app that the program belongs to, hands those with "mutable-content" to an extension that
/// `makeExtension` makes for it, and shows them; tells the app where pushes are to be sent, and what the user did with a
/// notification. The program's bundle identifier is the app's with ".NotificationService", which is also the name by which
/// the message bus starts it.
///
/// To be called on the main thread, before there are others. Returns when a minute has passed in which nothing came and
/// nothing was shown, or on SIGTERM, SIGINT or SIGHUP, with what the program is to exit with: 0, or 1 where it could not
/// be what it should (no identifier, no bus, or another process has its name).
ZENTAVO_EXPORT int
runNotificationService(const std::shared_ptr<platform::Platform>& platform,
                       std::function<std::shared_ptr<platform::NotificationServiceExtension>()> makeExtension,
                       NotificationServiceOptions options = {});

} // namespace zentavo::desktop
