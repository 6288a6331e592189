#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Notification.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::desktop {

/// The app's notification-content extension, from the side of the notification service. Any thread.
class ContentExtension : public std::enable_shared_from_this<ContentExtension> {
public:
    /// How long it may take to start and to draw.
    static constexpr std::chrono::milliseconds timeout{30'000};

    /// `name` is the extension's on the bus.
    static std::shared_ptr<ContentExtension> make(std::shared_ptr<SessionBus> bus, std::string name,
                                                  std::shared_ptr<platform::SystemLog> log);

    /// Whether it runs or could be started. Until the bus has said so it is taken to be there.
    bool isThere() const;
    /// Has it show all of a notification; it is started for that. What fails is tried once more, as it may just have been
    /// about to end; `failed` is called on the bus's thread where that does not help.
    void show(const platform::Notification& notification, std::function<void()> failed);

private:
    ContentExtension(std::shared_ptr<SessionBus> bus, std::string name, std::shared_ptr<platform::SystemLog> log);

    void show(const std::string& text, int attemptsLeft, std::function<void()> failed);

    const std::shared_ptr<SessionBus> bus_;
    const std::string name_;
    const std::shared_ptr<platform::SystemLog> log_;
    mutable Mutex mutex_;
    bool runs_ ZENTAVO_GUARDED_BY(mutex_) = false;
    bool canStart_ ZENTAVO_GUARDED_BY(mutex_) = true;
};

} // namespace zentavo::desktop
