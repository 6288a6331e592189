#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "zentavo/core/Zentavo.h"
#include "zentavo/platform/Notification.h"
#include "zentavo/platform/NotificationExtensionContext.h"

namespace zentavo::gtk {

struct NotificationContentOptions {
    /// Stands over the content; the app's name, as a rule.
    std::string title;
    /// What the button that opens the notification says; empty: there is no such button.
    std::string openLabel = "Open";
    int width = 400; ///< points
    /// How long the program waits for a notification, at its start and after each window.
    std::chrono::milliseconds idle{10'000};
};

/// What a notification-content extension is made of: a program that the message bus starts when the user wants to see
/// all of a notification, and that shows it in a window of its own. There is one window: a notification that comes while
/// it is open takes the place of the one before.
///
/// Main thread only. The bundle of `sdk` must be that of the extension; see `docs/push.md`.
class ZENTAVO_EXPORT NotificationContentHost {
public:
    /// Draws `notification` in the window that is attached to `sdk`; false where it cannot, which closes the window.
    using Show = std::function<bool(std::shared_ptr<platform::NotificationExtensionContext> context,
                                    const platform::Notification& notification)>;

    /// Initialises the toolkit, and can be told what to show from then on: the main loop does it.
    NotificationContentHost(std::shared_ptr<Zentavo> sdk, Show show, NotificationContentOptions options = {});
    /// Closes the window.
    ~NotificationContentHost();
    NotificationContentHost(const NotificationContentHost&) = delete;
    NotificationContentHost& operator=(const NotificationContentHost&) = delete;

    /// True once there is no reason to stay: the window is closed, the app was told what the user chose, and nothing else
    /// came for a while. Also when there is no screen, no bus, or another program that does the same.
    bool isOver() const noexcept;
    /// Runs the main loop until then. What `main` is to return: 0, or 1 where nothing could ever be shown.
    int run();

private:
    class Service;
    const std::shared_ptr<Service> service_;
};

} // namespace zentavo::gtk
