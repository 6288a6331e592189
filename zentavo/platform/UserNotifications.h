#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Notification.h"
#include "zentavo/platform/UserNotificationDelegate.h"

namespace zentavo::platform {

enum class AuthorizationStatus { notDetermined = 0, denied = 1, authorized = 2, provisional = 3, ephemeral = 4 };

/// A set of these is a mask.
enum AuthorizationOption : std::uint32_t {
    authorizeBadge = 1U << 0U,
    authorizeSound = 1U << 1U,
    authorizeAlert = 1U << 2U,
};

/// The system's notification centre. Any thread. Completions are called exactly once, on a thread of the port's choice,
/// never inside the call.
class ZENTAVO_EXPORT UserNotifications {
public:
    /// Answers that wait for a delegate; of more, the oldest are dropped.
    static constexpr std::size_t maximumWaitingResponses = 16;

    virtual ~UserNotifications() = default;

    virtual void settings(std::function<void(AuthorizationStatus)> completion) = 0;
    /// Asks the user, where the system does that. `error` says why the question could not be put.
    virtual void
    requestAuthorization(std::uint32_t options,
                         std::function<void(bool granted, std::optional<std::string> error)> completion) = 0;

    /// From now on `delegate` is asked and told, in place of an earlier one; it is not kept alive. Answers that came
    /// while there was none (the click that started the app) are told to it then, each once, in the order of arrival.
    virtual void setDelegate(std::weak_ptr<UserNotificationDelegate> delegate) = 0;

    /// Shows a notification, its badge on the app's icon included. `error` says why it could not be shown.
    virtual void add(NotificationRequest request, std::function<void(std::optional<std::string> error)> completion) = 0;
    /// What is shown now, in the order of arrival; where several processes of the app show notifications, each one's own.
    virtual void delivered(std::function<void(std::vector<Notification>)> completion) = 0;
    /// Takes notifications away again; what is not there is no failure.
    virtual void removeDelivered(std::vector<std::string> identifiers) = 0;

    /// Makes a kind of notification known to this process. One that is known under the same identifier stays.
    virtual void addCategory(NotificationCategory category) = 0;
    /// The kinds that are known, in the order in which they became so.
    virtual void categories(std::function<void(std::vector<NotificationCategory>)> completion) = 0;

    /// Sets the number on the app's icon; 0 takes it away. Without a place for it nothing happens.
    virtual void setBadgeCount(std::int64_t count) = 0;
};

} // namespace zentavo::platform
