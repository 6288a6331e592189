#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ports/desktop/NotificationActions.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Notification.h"
#include "zentavo/platform/Preferences.h"

namespace zentavo::desktop {

/// What a program has on the desktop's screen, kept in its standard suite: the process that comes after one that was
/// killed, or ended early, knows what a click is about. Any thread; members wait for the disk.
class ZENTAVO_EXPORT ShownNotifications {
public:
    /// Of more, the oldest are not kept; nor are notifications whose text for the bus is longer.
    static constexpr std::size_t maximumCount = 20;
    static constexpr std::size_t maximumBytes = 16U << 10U;

    struct Entry {
        std::uint32_t id = 0; ///< the service's
        platform::Notification notification;
        std::vector<DesktopAction> actions; ///< without labels
    };

    explicit ShownNotifications(std::shared_ptr<platform::PreferencesProvider> preferences)
        : preferences_(std::move(preferences)) {}

    /// `server` is the process of the desktop's service that gave the id: see `NotificationServer::Events`.
    void add(const std::string& server, const Entry& entry) const;
    void remove(std::uint32_t id) const;

    /// `up` was shown by `server`, and may be up still. What another one has shown is `gone`, and no longer kept.
    struct Left {
        std::vector<Entry> up;
        std::vector<platform::Notification> gone;
    };
    Left takeUp(const std::string& server) const;

private:
    const std::shared_ptr<platform::PreferencesProvider> preferences_;
};

} // namespace zentavo::desktop
